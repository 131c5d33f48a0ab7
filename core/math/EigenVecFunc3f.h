#pragma once

#include <array>

#include <Eigen/Core>

#include "core/math/Vector3D.h"

/// Triangle helpers on Eigen's fixed 3 x 1 column vector of floats. Safe from any thread.
namespace EigenVecFunc3f {

/// The three corners of a triangle, in winding order.
using Corners = std::array<Eigen::Vector3f, 3>;

/// The same point as an Eigen vector, bit for bit.
inline Eigen::Vector3f VectorToEigen(const Vector3D<float>& point)
{
    return {point.x, point.y, point.z};
}

/// The same point as a Vector3D, bit for bit.
inline Vector3D<float> EigenToVector(const Eigen::Vector3f& point)
{
    return {point.x(), point.y(), point.z()};
}

/// The unit normal of a triangle, right-handed in corner order; (0, 0, 0) where CalcNormal() gives that.
inline Eigen::Vector3f EigenVecNormal(const Corners& corners)
{
    Vector3D<float> normal;
    Vector3D<float>::CalcNormal(EigenToVector(corners[0]), EigenToVector(corners[1]),
                                EigenToVector(corners[2]), normal);
    return VectorToEigen(normal);
}

/// Scales @p vector to length 1 in place. A vector without length, or that is not finite, becomes (0, 0, 0).
inline void EigenVecNormalize(Eigen::Vector3f& vector)
{
    const Eigen::Vector3d wide = vector.cast<double>();
    const double length = wide.norm();
    if (length > 0 && std::isfinite(length))
        vector = (wide / length).cast<float>();
    else
        vector.setZero();
}

/// The triangle's area, worked out in double precision. NaN or infinite when a corner is not finite.
inline float CalcFaceArea(const Corners& corners)
{
    const Vector3D<double> n =
        CalcAreaVector(EigenToVector(corners[0]), EigenToVector(corners[1]), EigenToVector(corners[2]));
    return float(std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z) / 2);
}

} // namespace EigenVecFunc3f
