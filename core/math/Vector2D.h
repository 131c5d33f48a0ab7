#pragma once

/// Two packed numbers: a texture coordinate (u, v) in float, a point of a path in double.
template<class T>
struct Vector2D {
    /// @{
    /// Both 0 at first.
    T x = T(0);
    T y = T(0);
    /// @}

    /// @{
    /// From its numbers, or of zeros.
    constexpr Vector2D() = default;
    constexpr Vector2D(T xValue, T yValue) : x(xValue), y(yValue) {}
    /// @}

    /// @{
    /// Equality of numbers: -0 equals 0, a NaN equals nothing.
    friend constexpr bool operator==(const Vector2D& a, const Vector2D& b)
    {
        return a.x == b.x && a.y == b.y;
    }
    friend constexpr bool operator!=(const Vector2D& a, const Vector2D& b) { return !(a == b); }
    /// @}
};

static_assert(sizeof(Vector2D<float>) == 8 && sizeof(Vector2D<double>) == 16, "packed, nothing else");
