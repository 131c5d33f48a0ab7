#pragma once

#include <cmath>
#include <vector>

#include "core/math/Vector3D.h"

// What the samples are built of. Angles run counter-clockwise seen from above.

using Point = Vector3D<float>;
using Ring = std::vector<Point>;

constexpr double kTurn = 6.283185307179586;

/// A point by its distance from the z axis, its place on the circle in turns, and its height.
inline Point Polar(double radius, double turns, double z)
{
    return {float(radius * std::cos(kTurn * turns)), float(radius * std::sin(kTurn * turns)), float(z)};
}
