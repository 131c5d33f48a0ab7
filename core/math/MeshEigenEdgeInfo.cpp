#include "core/math/MeshEigenEdgeInfo.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "core/common/HashSeed_p.h"

namespace {

using Key = std::array<double, 3>;

constexpr double kEqualsNothing = std::numeric_limits<double>::quiet_NaN();

Key KeyOfPoint(const Eigen::Vector3f& point)
{
    // Adding 0 turns -0 into 0, so that equal keys are equal bits and hash alike.
    if (!point.allFinite())
        return {kEqualsNothing, kEqualsNothing, kEqualsNothing};
    return {double(point.x()) + 0.0, double(point.y()) + 0.0, double(point.z()) + 0.0};
}

uint64_t HashOf(const Key& key, uint64_t seed)
{
    uint64_t hash = seed;
    for (const double value : key) {
        uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        hash = (hash ^ bits) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 32;
    }
    return hash;
}

} // namespace

void MeshEigenEdgeInfo::init(const Eigen::Vector3f* p, const Eigen::Vector3f* q)
{
    m_start = KeyOfPoint(*p);
    m_end = KeyOfPoint(*q);
}

int MeshEigenEdgeInfo::getHashValue(int tableSize) const
{
    // A sum does not depend on the order of its parts: both directions of an edge hash alike.
    const uint64_t seed = kr::HashSeed();
    const uint64_t hash = (HashOf(m_start, seed) + HashOf(m_end, seed)) * 0xD6E8FEB86659FD93u;
    // The high half is the better mixed one; a remainder of 32 bits costs half of one of 64.
    return int(uint32_t(hash >> 32) % uint32_t(tableSize));
}
