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

float DecodedPart(float part)
{
    return part <= 0.04045F ? part / 12.92F : std::pow((part + 0.055F) / 1.055F, 2.4F);
}

Colour Decoded(QRgb colour)
{
    const auto part = [](int byte) { return DecodedPart(float(byte) / 255); };
    return {part(qRed(colour)), part(qGreen(colour)), part(qBlue(colour))};
}

} // namespace krmodel
