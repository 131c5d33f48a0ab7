#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include <QByteArray>

#include "core/math/Vector3D.h"
#include "tests/common/Directory.h"

namespace test {

using Point = Vector3D<float>;

/// A binary file, byte by byte: header, count, records. What is not said otherwise is as in an ordinary file.
class BinarySTL {
public:
    BinarySTL() : m_header(80, 'h') {}

    BinarySTL& Header(const QByteArray& header)
    {
        m_header = header;
        return *this;
    }
    /// Claims another count than that of the facets added.
    BinarySTL& Count(std::uint32_t count)
    {
        m_count = count;
        m_hasCount = true;
        return *this;
    }
    BinarySTL& Facet(const Point& a, const Point& b, const Point& c, std::uint16_t attribute = 0)
    {
        const Point points[4] = {Point(9, 9, 9), a, b, c};
        m_records.append(reinterpret_cast<const char*>(points), sizeof points);
        m_records.append(reinterpret_cast<const char*>(&attribute), sizeof attribute);
        return *this;
    }
    BinarySTL& Facets(int count)
    {
        for (int i = 0; i < count; ++i) {
            const auto offset = static_cast<float>(10 * i);
            Facet({offset, 0, 0}, {offset + 1, 0, 0}, {offset, 1, 0});
        }
        return *this;
    }
    BinarySTL& Surplus(int bytes)
    {
        m_records.append(bytes, 's');
        return *this;
    }
    BinarySTL& CutLast(int bytes)
    {
        m_records.chop(bytes);
        return *this;
    }

    operator QByteArray() const
    {
        const std::uint32_t count = m_hasCount ? m_count : static_cast<std::uint32_t>(m_records.size() / 50);
        QByteArray bytes = m_header;
        bytes.append(reinterpret_cast<const char*>(&count), sizeof count);
        return bytes + m_records;
    }

private:
    QByteArray m_header;
    QByteArray m_records;
    std::uint32_t m_count = 0;
    bool m_hasCount = false;
};

/// A text file with one facet a call, numbers in their shortest form.
class TextSTL {
public:
    explicit TextSTL(const QByteArray& lineEnd = "\n") : m_lineEnd(lineEnd), m_bytes("solid model" + lineEnd)
    {}

    TextSTL& Normal() { return Line("  facet normal 0 0 1").Line("    outer loop"); }
    TextSTL& Vertex(const Point& point)
    {
        return Line("      vertex " + Number(point.x) + ' ' + Number(point.y) + ' ' + Number(point.z));
    }
    TextSTL& EndFacet() { return Line("    endloop").Line("  endfacet"); }
    TextSTL& Facet(const Point& a, const Point& b, const Point& c)
    {
        return Normal().Vertex(a).Vertex(b).Vertex(c).EndFacet();
    }
    TextSTL& Facets(int count)
    {
        for (int i = 0; i < count; ++i) {
            const auto offset = static_cast<float>(10 * i);
            Facet({offset, 0, 0}, {offset + 1, 0, 0}, {offset, 1, 0});
        }
        return *this;
    }
    TextSTL& Line(const QByteArray& line)
    {
        m_bytes += line + m_lineEnd;
        return *this;
    }
    TextSTL& End() { return Line("endsolid model"); }

    operator QByteArray() const { return m_bytes; }

private:
    static QByteArray Number(float value) { return QByteArray::number(static_cast<double>(value), 'g', 9); }

    QByteArray m_lineEnd;
    QByteArray m_bytes;
};

} // namespace test
