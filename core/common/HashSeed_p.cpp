#include "core/common/HashSeed_p.h"

#include <random>

namespace kr {

std::uint64_t HashSeed()
{
    static const std::uint64_t kSeed = [] {
        std::random_device device;
        return std::uint64_t(device()) << 32 | device();
    }();
    return kSeed;
}

} // namespace kr
