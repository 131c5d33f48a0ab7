#pragma once

/// Four packed numbers: in float a colour with alpha (r, g, b, a), each 0..1.
template<class T>
struct Vector4D {
    /// @{
    /// Red, green, blue, alpha of a colour. All 0 at first.
    T x = T(0);
    T y = T(0);
    T z = T(0);
    T w = T(0);
    /// @}

    /// @{
    /// From its numbers, or of zeros.
    constexpr Vector4D() = default;
    constexpr Vector4D(T xValue, T yValue, T zValue, T wValue) : x(xValue), y(yValue), z(zValue), w(wValue) {}
    /// @}

    /// @{
    /// Equality of numbers: -0 equals 0, a NaN equals nothing.
    friend constexpr bool operator==(const Vector4D& a, const Vector4D& b)
    {
        return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
    }
    friend constexpr bool operator!=(const Vector4D& a, const Vector4D& b) { return !(a == b); }
    /// @}
};

static_assert(sizeof(Vector4D<float>) == 16, "packed, nothing else");
