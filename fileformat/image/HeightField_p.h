#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <QImage>

namespace kr::image {

/// How a picture is laid out in space; ImageFile::LoadFile() has the meaning of each.
struct ReliefSize {
    float sizeX = 0;
    float sizeY = 0;
    bool brightIsHigh = true;
    float minHeight = 0;
    float maxHeight = 0;
};

/// A field of heights over a grid: the vertex of column c in row r lies at (x[c], y[r], levels[green byte]).
/// Row 0 is the picture's top row, where y is largest.
struct HeightField {
    /// @param grey  Format_RGB32, 2 pixels a side or more
    HeightField(QImage grey, const ReliefSize& size);

    int Columns() const { return picture.width(); }
    int Rows() const { return picture.height(); }
    std::size_t VertexCount() const { return x.size() * y.size(); }

    /// Looks up the heights in a row.
    class Row {
    public:
        Row(const HeightField& field, int row)
            : m_levels(field.levels.data()),
              m_pixels(reinterpret_cast<const QRgb*>(field.picture.constScanLine(row)))
        {}
        float operator[](int column) const { return m_levels[qGreen(m_pixels[column])]; }

    private:
        const float* m_levels;
        const QRgb* m_pixels;
    };

    std::vector<float> x;
    std::vector<float> y;
    std::array<float, 256> levels;
    QImage picture;
};

} // namespace kr::image
