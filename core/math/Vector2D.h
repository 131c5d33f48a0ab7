#pragma once

/// Two packed numbers: a texture coordinate (u, v) in float, a point of a path in double.
template<class T>
struct Vector2D {
    T x = T(0);
    T y = T(0);

    constexpr Vector2D() = default;
    constexpr Vector2D(T xValue, T yValue) : x(xValue), y(yValue) {}

    friend constexpr bool operator==(const Vector2D& a, const Vector2D& b)
    {
        return a.x == b.x && a.y == b.y;
    }
    friend constexpr bool operator!=(const Vector2D& a, const Vector2D& b) { return !(a == b); }
};

static_assert(sizeof(Vector2D<float>) == 8 && sizeof(Vector2D<double>) == 16, "packed, nothing else");
