#pragma once

#include <type_traits>

/// One triangle: three vertex indices, counted from 0, in winding order (counter-clockwise seen from
/// outside). Twelve packed bytes; (-1, -1, -1) stands for a face that is not yet assigned.
struct TriangleFace {
    int v[3] = {0, 0, 0}; ///< the indices, corner by corner

    /// @{
    /// From its indices, or of zeros.
    constexpr TriangleFace() = default;
    constexpr TriangleFace(int first, int second, int third) : v{first, second, third} {}
    /// @}

    /// @{
    /// The index at a corner.
    /// @param corner  0, 1 or 2; not checked
    constexpr int& operator[](int corner) { return v[corner]; }
    constexpr int operator[](int corner) const { return v[corner]; }
    /// @}

    /// @{
    /// The same indices in the same order: a face that begins at another corner is not equal.
    friend constexpr bool operator==(const TriangleFace& a, const TriangleFace& b)
    {
        return a.v[0] == b.v[0] && a.v[1] == b.v[1] && a.v[2] == b.v[2];
    }
    friend constexpr bool operator!=(const TriangleFace& a, const TriangleFace& b) { return !(a == b); }
    /// @}
};

static_assert(sizeof(TriangleFace) == 12, "packed, nothing else");
static_assert(std::is_trivially_copyable_v<TriangleFace>, "moved in and out of files as raw bytes");
