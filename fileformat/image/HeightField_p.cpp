#include "fileformat/image/HeightField_p.h"

#include <algorithm>
#include <utility>

namespace kr::image {

namespace {

// `count` coordinates from 0 to `size`. The last one is set: a multiple of the step may miss it by rounding.
std::vector<float> EvenlySpaced(int count, float size)
{
    const float step = size / static_cast<float>(count - 1);
    std::vector<float> places(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        places[static_cast<std::size_t>(i)] = static_cast<float>(i) * step;
    places.back() = size;
    return places;
}

void Move(std::vector<float>& places, float offset)
{
    for (float& place : places)
        place += offset;
}

std::array<float, 256> HeightsOfLevels(const ReliefSize& size)
{
    std::array<float, 256> heights{};
    for (int level = 0; level < 256; ++level) {
        const int effective = size.brightIsHigh ? level : 255 - level;
        const float above = (size.maxHeight - size.minHeight) * static_cast<float>(effective) / 255.0F;
        // The relief is moved by 0 along z, which makes 0 of -0.
        heights[static_cast<std::size_t>(level)] = size.minHeight + above + 0.0F;
    }
    return heights;
}

} // namespace

HeightField::HeightField(QImage grey, const ReliefSize& size)
    : x(EvenlySpaced(grey.width(), size.sizeX)),
      y(EvenlySpaced(grey.height(), size.sizeY)),
      levels(HeightsOfLevels(size)),
      picture(std::move(grey))
{
    std::reverse(y.begin(), y.end());
    // Hosts place the mesh from here on and count on the offset.
    Move(x, size.sizeX / 2);
    Move(y, size.sizeY / 2);
}

} // namespace kr::image
