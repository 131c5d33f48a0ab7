#include "apps/krmodel/Rounding.h"

#include <cmath>

namespace krmodel {

namespace {

/// From here on a float has no fraction.
constexpr float kFirstWhole = 16777216.0F;

double RoundedAt(double magnitude, double unit, double perUnit)
{
    // One of the two is a whole power of ten, which is exact; its inverse is not.
    return unit > 1 ? std::floor(magnitude / unit + 0.5) * unit
                    : std::floor(magnitude * perUnit + 0.5) / perUnit;
}

double RoundedToSixDigits(double magnitude)
{
    const int lastDigit = int(std::floor(std::log10(magnitude))) - 5;
    return RoundedAt(magnitude, std::pow(10.0, lastDigit), std::pow(10.0, -lastDigit));
}

} // namespace

float Rounded(float value, Rounding rounding)
{
    const float magnitude = std::fabs(value);
    if (rounding == Rounding::None || magnitude == 0 || !std::isfinite(value))
        return value;
    if (rounding == Rounding::SixDecimals && magnitude >= kFirstWhole)
        return value;
    const double rounded = rounding == Rounding::SixDecimals ? RoundedAt(double(magnitude), 1e-6, 1e6)
                                                             : RoundedToSixDigits(double(magnitude));
    return std::copysign(float(rounded), value);
}

std::vector<Vector3D<float>> RoundedVertices(const Mesh& mesh, Rounding rounding)
{
    std::vector<Vector3D<float>> vertices = *mesh.GetVerticesVecPtr();
    if (rounding == Rounding::None)
        return vertices;
    for (Vector3D<float>& vertex : vertices)
        vertex = {Rounded(vertex.x, rounding), Rounded(vertex.y, rounding), Rounded(vertex.z, rounding)};
    return vertices;
}

} // namespace krmodel
