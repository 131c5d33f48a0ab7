#pragma once

#include <cmath>
#include <type_traits>

/// Three packed numbers: a point, a normal, an extent or a colour (r, g, b).
///
/// A Vector3D<float> is 12 bytes in memory and in binary model files alike (x, y, z, little-endian), so a
/// std::vector of them is a packed array of triples that may be copied to and from files as raw bytes.
template<class T>
struct Vector3D {
    /// @{
    /// All 0 at first.
    T x = T(0);
    T y = T(0);
    T z = T(0);
    /// @}

    /// @{
    /// From its numbers, or of zeros.
    constexpr Vector3D() = default;
    constexpr Vector3D(T xValue, T yValue, T zValue) : x(xValue), y(yValue), z(zValue) {}
    /// @}

    /// Adds @p other number by number.
    constexpr Vector3D& operator+=(const Vector3D& other)
    {
        x += other.x;
        y += other.y;
        z += other.z;
        return *this;
    }

    /// @{
    /// Equality of numbers: -0 equals 0, a NaN equals nothing.
    friend constexpr bool operator==(const Vector3D& a, const Vector3D& b)
    {
        return a.x == b.x && a.y == b.y && a.z == b.z;
    }
    friend constexpr bool operator!=(const Vector3D& a, const Vector3D& b) { return !(a == b); }
    /// @}

    /// Writes the unit normal of the triangle a, b, c into @p out: (b - a) x (c - a) normalised, right-handed
    /// in that order. Worked out in double precision and rounded once, so that facets of any size in range of
    /// a float have one. A triangle without area, or with a corner that is not finite, gives (0, 0, 0).
    static void CalcNormal(const Vector3D& a, const Vector3D& b, const Vector3D& c, Vector3D& out);
};

/// (b - a) x (c - a) in double precision: along the normal, as long as twice the triangle's area.
template<class T>
inline Vector3D<double> CalcAreaVector(const Vector3D<T>& a, const Vector3D<T>& b, const Vector3D<T>& c)
{
    const double ux = double(b.x) - double(a.x), uy = double(b.y) - double(a.y),
                 uz = double(b.z) - double(a.z);
    const double vx = double(c.x) - double(a.x), vy = double(c.y) - double(a.y),
                 vz = double(c.z) - double(a.z);
    return {uy * vz - uz * vy, uz * vx - ux * vz, ux * vy - uy * vx};
}

template<class T>
inline void Vector3D<T>::CalcNormal(const Vector3D& a, const Vector3D& b, const Vector3D& c, Vector3D& out)
{
    const Vector3D<double> n = CalcAreaVector(a, b, c);
    const double length = std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
    const bool hasDirection = length > 0 && std::isfinite(length);
    // The vector is scaled, not the length inverted: 1 / length may overflow where n / length does not.
    out = hasDirection ? Vector3D(T(n.x / length), T(n.y / length), T(n.z / length)) : Vector3D();
}

static_assert(sizeof(Vector3D<float>) == 12 && sizeof(Vector3D<double>) == 24, "packed, nothing else");
static_assert(std::is_trivially_copyable_v<Vector3D<float>>, "moved in and out of files as raw bytes");
