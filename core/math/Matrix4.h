#pragma once

/// A 4 x 4 matrix for column vectors: p' = M p, so the translation stands in column 3.
/// The default is the identity.
template<class T>
struct Matrix4 {
    /// Row by row: element (row, column) is m[4 * row + column]. May be written directly.
    T m[16] = {T(1), T(0), T(0), T(0), T(0), T(1), T(0), T(0),
               T(0), T(0), T(1), T(0), T(0), T(0), T(0), T(1)};

    /// Element (row, column); 0 when either is outside 0..3.
    constexpr T get(int row, int column) const { return IsInside(row, column) ? m[4 * row + column] : T(0); }

    /// Sets element (row, column); ignored when either is outside 0..3.
    constexpr void set(int row, int column, T value)
    {
        if (IsInside(row, column))
            m[4 * row + column] = value;
    }

    /// The matrix product with this matrix on the left: applies @p right first, then this.
    constexpr Matrix4 operator*(const Matrix4& right) const
    {
        Matrix4 product;
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column) {
                T sum = T(0);
                for (int k = 0; k < 4; ++k)
                    sum += m[4 * row + k] * right.m[4 * k + column];
                product.m[4 * row + column] = sum;
            }
        return product;
    }

private:
    static constexpr bool IsInside(int row, int column)
    {
        return row >= 0 && row < 4 && column >= 0 && column < 4;
    }
};
