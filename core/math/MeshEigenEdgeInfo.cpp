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

// To the nearest whole number, halves to the even one. Adding 1.5 * 2^52 leaves no bits for a fraction; from
// 2^51 on the sum would lose more than that.
double RoundToNearest(double value)
{
    constexpr double kNoFraction = 6755399441055744.0;
    constexpr double kTooLarge = 2251799813685248.0;
    return std::fabs(value) < kTooLarge ? (value + kNoFraction) - kNoFraction : std::nearbyint(value);
}

// Cell numbers stay doubles: a far point over a small tolerance has a number that no integer holds.
Key KeyOfCell(const Eigen::Vector3f& point, const Eigen::Vector3f& boxMin, double cellsPerUnit)
{
    Key key;
    for (int axis = 0; axis < 3; ++axis)
        key[size_t(axis)] = RoundToNearest((double(point[axis]) - double(boxMin[axis])) * cellsPerUnit) + 0.0;
    return key;
}

// Floats over a float make doubles that cannot overflow: a number that is not finite came in as one.
bool IsFinite(const Key& key)
{
    return (key[0] + key[1] + key[2]) * 0.0 == 0.0;
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

bool MeshEigenEdgeInfo::update(const Eigen::Vector3f& a, const Eigen::Vector3f& b,
                               const Eigen::Vector3f& boxMin, float tolerance)
{
    if (tolerance > 0 && std::isfinite(tolerance)) {
        const double cellsPerUnit = 1 / double(tolerance);
        m_start = KeyOfCell(a, boxMin, cellsPerUnit);
        m_end = KeyOfCell(b, boxMin, cellsPerUnit);
        if (IsFinite(m_start) && IsFinite(m_end) && m_start != m_end)
            return true;
    }
    m_start.fill(kEqualsNothing);
    m_end.fill(kEqualsNothing);
    return false;
}

bool MeshEigenEdgeInfo::isSameEdge(const MeshEigenEdgeInfo& other) const
{
    return isOppositeEdge(other) || (m_start == other.m_start && m_end == other.m_end);
}

bool MeshEigenEdgeInfo::isOppositeEdge(const MeshEigenEdgeInfo& other) const
{
    return m_start == other.m_end && m_end == other.m_start;
}

int MeshEigenEdgeInfo::getHashValue(int tableSize) const
{
    // A sum does not depend on the order of its parts: both directions of an edge hash alike.
    const uint64_t seed = kr::HashSeed();
    const uint64_t hash = (HashOf(m_start, seed) + HashOf(m_end, seed)) * 0xD6E8FEB86659FD93u;
    // The high half is the better mixed one; a remainder of 32 bits costs half of one of 64.
    return int(uint32_t(hash >> 32) % uint32_t(tableSize));
}
