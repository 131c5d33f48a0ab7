#include "fileformat/image/Relief_p.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>

#include "core/common/LargePages_p.h"
#include "fileformat/image/HeightField_p.h"
#include "fileformat/image/ReliefWalls_p.h"

// Lists of known size would be filled twice if they were resized first. So they grow in room that is
// reserved, in blocks that are put together in the first-level cache: appending these is a plain copy.

namespace kr::image {

namespace {

using Point = Vector3D<float>;
using Points = std::vector<Point>;
using Faces = std::vector<TriangleFace>;

constexpr int kStepsPerBlock = 512;

// Appends PerStep elements for each step from `first` up to `end`; write(step, place) writes them.
template<int PerStep, class Element, class Write>
void AppendSteps(std::vector<Element>& list, int first, int end, Write write)
{
    std::array<Element, std::size_t(kStepsPerBlock) * PerStep> block;
    for (int begin = first; begin < end; begin += kStepsPerBlock) {
        const int count = std::min(end - begin, kStepsPerBlock);
        for (int i = 0; i < count; ++i)
            write(begin + i, block.data() + std::ptrdiff_t(i) * PerStep);
        list.insert(list.end(), block.begin(), block.begin() + std::ptrdiff_t(count) * PerStep);
    }
}

void AppendTop(const HeightField& field, Points& vertices)
{
    const float* x = field.x.data();
    for (int r = 0; r < field.Rows(); ++r) {
        const HeightField::Row heights(field, r);
        const float y = field.y[std::size_t(r)];
        AppendSteps<1>(vertices, 0, field.Columns(), [=](int c, Point* vertex) {
            *vertex = {x[c], y, heights[c]};
        });
    }
}

// Once around, anticlockwise seen from above, from the corner at x = 0 and y = 0.
void AppendBorder(const HeightField& field, Points& vertices)
{
    const float *x = field.x.data(), *y = field.y.data();
    const int lastColumn = field.Columns() - 1, lastRow = field.Rows() - 1;
    for (int c = 0; c <= lastColumn; ++c)
        vertices.emplace_back(x[c], y[lastRow], 0.0F);
    for (int r = lastRow - 1; r >= 0; --r)
        vertices.emplace_back(x[lastColumn], y[r], 0.0F);
    for (int c = lastColumn - 1; c >= 0; --c)
        vertices.emplace_back(x[c], y[0], 0.0F);
    for (int r = 1; r < lastRow; ++r)
        vertices.emplace_back(x[0], y[r], 0.0F);
}

void AppendInside(const HeightField& field, Points& vertices)
{
    const float* x = field.x.data();
    for (int r = 1; r < field.Rows() - 1; ++r) {
        const float y = field.y[std::size_t(r)];
        AppendSteps<1>(vertices, 1, field.Columns() - 1, [=](int c, Point* vertex) {
            *vertex = {x[c], y, 0.0F};
        });
    }
}

// Numbers of the vertices of such a solid.
class Numbering {
public:
    Numbering(int columns, int rows) : m_columns(columns), m_rows(rows) {}

    int Columns() const { return m_columns; }
    int Rows() const { return m_rows; }
    int LastColumn() const { return m_columns - 1; }
    int LastRow() const { return m_rows - 1; }

    int Top(int row, int column) const { return row * m_columns + column; }

    // The vertex of the bottom under that of the top.
    int Bottom(int row, int column) const
    {
        const int bottom = m_columns * m_rows;
        if (row == LastRow())
            return bottom + column;
        if (column == LastColumn())
            return bottom + LastColumn() + LastRow() - row;
        if (row == 0)
            return bottom + LastColumn() + LastRow() + LastColumn() - column;
        if (column == 0)
            return bottom + 2 * LastColumn() + LastRow() + row;
        return bottom + 2 * LastColumn() + 2 * LastRow() + (row - 1) * (m_columns - 2) + column - 1;
    }

    int Of(Corner corner) const
    {
        return corner.level == Corner::Level::Top ? Top(corner.row, corner.column)
                                                  : Bottom(corner.row, corner.column);
    }

    void FillBottomRow(int row, std::vector<int>& numbers) const
    {
        numbers.resize(std::size_t(m_columns));
        if (row == 0 || row == LastRow()) {
            for (int c = 0; c < m_columns; ++c)
                numbers[std::size_t(c)] = Bottom(row, c);
            return;
        }
        std::iota(numbers.begin(), numbers.end(), Bottom(row, 1) - 1);
        numbers.front() = Bottom(row, 0);
        numbers.back() = Bottom(row, LastColumn());
    }

private:
    int m_columns;
    int m_rows;
};

void AppendTopFaces(const Numbering& number, Faces& faces)
{
    const int down = number.Columns();
    for (int r = 0; r < number.LastRow(); ++r)
        AppendSteps<2>(faces, number.Top(r, 0), number.Top(r, number.LastColumn()),
                       [=](int a, TriangleFace* cell) {
                           cell[0] = {a, a + down, a + 1};
                           cell[1] = {a + down, a + down + 1, a + 1};
                       });
}

// The other diagonal than the top's.
void AppendBottomFaces(const Numbering& number, Faces& faces)
{
    std::vector<int> upperRow, lowerRow;
    number.FillBottomRow(0, lowerRow);
    for (int r = 0; r < number.LastRow(); ++r) {
        upperRow.swap(lowerRow);
        number.FillBottomRow(r + 1, lowerRow);
        const int *upper = upperRow.data(), *lower = lowerRow.data();
        AppendSteps<2>(faces, 0, number.LastColumn(), [=](int c, TriangleFace* cell) {
            cell[0] = {upper[c], upper[c + 1], lower[c + 1]};
            cell[1] = {upper[c], lower[c + 1], lower[c]};
        });
    }
}

void AppendWalls(const Numbering& number, Faces& faces)
{
    ForEachWallFace(number.Columns(), number.Rows(), [&](Corner a, Corner b, Corner c) {
        faces.emplace_back(number.Of(a), number.Of(b), number.Of(c));
    });
}

} // namespace

Points ReliefVertices(const HeightField& field)
{
    Points vertices;
    ReserveLarge(vertices, 2 * field.VertexCount());
    AppendTop(field, vertices);
    AppendBorder(field, vertices);
    AppendInside(field, vertices);
    return vertices;
}

// Two faces a cell on top and at the bottom, two for each of the top's border edges.
Faces ReliefFaces(int columns, int rows)
{
    const Numbering number(columns, rows);
    Faces faces;
    ReserveLarge(faces, 4 * std::size_t(columns) * std::size_t(rows) - 4);
    AppendTopFaces(number, faces);
    AppendBottomFaces(number, faces);
    AppendWalls(number, faces);
    return faces;
}

} // namespace kr::image
