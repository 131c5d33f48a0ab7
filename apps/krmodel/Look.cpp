#include "apps/krmodel/Look.h"

#include <cmath>

namespace krmodel {

int EncodedPart(float light)
{
    const float encoded = light <= 0.0031308F ? 12.92F * light : 1.055F * std::pow(light, 1 / 2.4F) - 0.055F;
    return int(std::lround(encoded * 255));
}

QRgb Encoded(const Colour& light)
{
    return qRgb(EncodedPart(light.x()), EncodedPart(light.y()), EncodedPart(light.z()));
}

} // namespace krmodel
