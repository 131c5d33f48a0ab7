#include "core/mesh/MeshMaterialMatrix.h"

#include <cmath>

namespace {

using Matrix = Matrix4<double>;

struct Turn {
    double cosine;
    double sine;
};

Turn TurnOf(double degrees)
{
    // The remainder is exact, and so is the swap of sine and cosine by quarters: 90 degrees turn by exactly
    // that, where cos(pi / 2) is 6e-17.
    constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180;
    int quarters = 0;
    const double rest = std::remquo(degrees, 90.0, &quarters) * kRadiansPerDegree;
    const double cosine = std::cos(rest), sine = std::sin(rest);
    switch (quarters & 3) {
    case 0:
        return {cosine, sine};
    case 1:
        return {-sine, cosine};
    case 2:
        return {-cosine, -sine};
    default:
        return {sine, -cosine};
    }
}

Matrix Translation(const Vector3D<double>& by)
{
    Matrix matrix;
    matrix.set(0, 3, by.x);
    matrix.set(1, 3, by.y);
    matrix.set(2, 3, by.z);
    return matrix;
}

Matrix Scaling(const Vector3D<double>& by)
{
    Matrix matrix;
    matrix.set(0, 0, by.x);
    matrix.set(1, 1, by.y);
    matrix.set(2, 2, by.z);
    return matrix;
}

// Counter-clockwise, seen with the axis pointing at the viewer.
Matrix Rotation(int axis, double degrees)
{
    const Turn turn = TurnOf(degrees);
    const int next = (axis + 1) % 3, last = (axis + 2) % 3;
    Matrix matrix;
    matrix.set(next, next, turn.cosine);
    matrix.set(next, last, -turn.sine);
    matrix.set(last, next, turn.sine);
    matrix.set(last, last, turn.cosine);
    return matrix;
}

} // namespace

void MeshMaterialMatrix::updateMatrix()
{
    const Matrix turned = Rotation(2, rotation.z) * Rotation(1, rotation.y) * Rotation(0, rotation.x);
    const Matrix aboutMiddle = Translation({0.5, 0.5, 0}) * turned * Translation({-0.5, -0.5, 0});
    matrix = Translation(translation) * Scaling(repeat) * aboutMiddle;
}
