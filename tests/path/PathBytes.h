#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>

#include <QByteArray>

#include "fileformat/path/DXFPathFile.h"

namespace test {

using Paths = DXFPathFile::Paths;
using Point = Vector2D<double>;

/// The bytes of a path file, put down field by field.
class PathBytes {
public:
    PathBytes& Integers(std::initializer_list<std::int32_t> values)
    {
        for (const std::int32_t value : values)
            Number(static_cast<std::uint32_t>(value), 4);
        return *this;
    }
    PathBytes& Reals(std::initializer_list<double> values)
    {
        for (const double value : values) {
            std::uint64_t bits;
            std::memcpy(&bits, &value, sizeof bits);
            Number(bits, 8);
        }
        return *this;
    }
    PathBytes& Text(const QByteArray& text)
    {
        m_bytes += text;
        return *this;
    }
    operator QByteArray() const { return m_bytes; }

private:
    void Number(std::uint64_t bits, int size)
    {
        for (int i = 0; i < size; ++i)
            m_bytes += static_cast<char>(bits >> 8 * i & 0xff);
    }

    QByteArray m_bytes;
};

/// Two sets, one named and with two contours, the other without a name, its only contour empty.
inline PathBytes SmallFile()
{
    return PathBytes()
        .Integers({2, -7, 8})
        .Text("QQDEAA==") // "A" and A with diaeresis
        .Integers({2, 1})
        .Reals({0.5, -2})
        .Integers({2})
        .Reals({1, 2, 3, 4})
        .Integers({9, 0, 1, 0});
}

inline Paths SmallPaths()
{
    return {{-7, {{{0.5, -2}}, {{1, 2}, {3, 4}}}}, {9, {{}}}};
}

} // namespace test
