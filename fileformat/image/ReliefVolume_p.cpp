#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "core/common/SignedVolume_p.h"
#include "fileformat/image/HeightField_p.h"
#include "fileformat/image/ReliefWalls_p.h"
#include "fileformat/image/Relief_p.h"

// The terms of kr::SignedVolume for the faces of a relief, in the order of the faces, so that the sum has the
// same bits. On a grid most differences of coordinates are 0: what is multiplied by them is left out, which
// changes no bit of a term of finite numbers. Terms are worked out some hundred at a time, side by side,
// which compilers turn into vector instructions; adding them up one by one is what takes the time.

namespace kr::image {

namespace {

using Point = Vector3D<float>;

constexpr int kCellsPerBlock = 256;

// The terms of the two faces of some neighbouring cells.
struct CellTerms {
    std::array<double, kCellsPerBlock> first;
    std::array<double, kCellsPerBlock> second;

    void AddTo(SignedVolume& volume, int cells) const
    {
        for (std::size_t i = 0; i < std::size_t(cells); ++i) {
            volume.AddSixfold(first[i]);
            volume.AddSixfold(second[i]);
        }
    }
};

// Calls addCells(first column, how many) for the cells of a row in blocks.
template<class AddCells>
void ForEachBlock(const HeightField& field, AddCells addCells)
{
    const int cells = field.Columns() - 1;
    for (int first = 0; first < cells; first += kCellsPerBlock)
        addCells(first, std::min(cells - first, kCellsPerBlock));
}

// The heights over one block of a row of cells: one more than cells.
using Heights = std::array<double, kCellsPerBlock + 1>;

void FillHeights(const HeightField& field, int row, int first, int cells, Heights& heights)
{
    const HeightField::Row source(field, row);
    for (int i = 0; i <= cells; ++i)
        heights[std::size_t(i)] = double(source[first + i]);
}

//   (x[i], upperY, upper[i]) ---- (x[i + 1], upperY, upper[i + 1])
//             |       first    /         |
//             |     /     second         |
//   (x[i], lowerY, lower[i]) ---- (x[i + 1], lowerY, lower[i + 1])
struct TopBlock {
    const float* x;
    double upperY;
    double lowerY;
    Heights upper;
    Heights lower;
    int cells;

    void WorkOut(const Vector3D<double>& origin, CellTerms& terms) const
    {
        const double height = lowerY - upperY;
        for (std::size_t i = 0; i < std::size_t(cells); ++i) {
            const double left = double(x[i]) - origin.x;
            const double width = double(x[i + 1]) - double(x[i]);
            const double down = lower[i] - upper[i];
            const double across = upper[i + 1] - upper[i];
            terms.first[i] = left * (height * across) + (upperY - origin.y) * (down * width) +
                             (upper[i] - origin.z) * -(height * width);
            const double right = lower[i + 1] - lower[i];
            const double diagonal = upper[i + 1] - lower[i];
            terms.second[i] = left * (right * height) +
                              (lowerY - origin.y) * (right * width - width * diagonal) +
                              (lower[i] - origin.z) * -(width * height);
        }
    }
};

void AddTop(const HeightField& field, const Vector3D<double>& origin, SignedVolume& volume)
{
    TopBlock block;
    CellTerms terms;
    for (int r = 0; r + 1 < field.Rows(); ++r) {
        block.upperY = double(field.y[std::size_t(r)]);
        block.lowerY = double(field.y[std::size_t(r) + 1]);
        ForEachBlock(field, [&](int first, int cells) {
            block.x = field.x.data() + first;
            block.cells = cells;
            FillHeights(field, r, first, cells, block.upper);
            FillHeights(field, r + 1, first, cells, block.lower);
            block.WorkOut(origin, terms);
            terms.AddTo(volume, cells);
        });
    }
}

// Both faces of a cell at the bottom have the same term: they lie at z = 0 and have the same area.
void AddBottom(const HeightField& field, const Vector3D<double>& origin, SignedVolume& volume)
{
    CellTerms terms;
    for (int r = 0; r + 1 < field.Rows(); ++r) {
        const double height = double(field.y[std::size_t(r) + 1]) - double(field.y[std::size_t(r)]);
        ForEachBlock(field, [&](int first, int cells) {
            const float* x = field.x.data() + first;
            for (std::size_t i = 0; i < std::size_t(cells); ++i) {
                const double width = double(x[i + 1]) - double(x[i]);
                terms.first[i] = terms.second[i] = (0.0 - origin.z) * (width * height);
            }
            terms.AddTo(volume, cells);
        });
    }
}

Point PointOf(const HeightField& field, Corner corner)
{
    const bool isTop = corner.level == Corner::Level::Top;
    return {field.x[std::size_t(corner.column)], field.y[std::size_t(corner.row)],
            isTop ? HeightField::Row(field, corner.row)[corner.column] : 0.0F};
}

void AddWalls(const HeightField& field, SignedVolume& volume)
{
    ForEachWallFace(field.Columns(), field.Rows(), [&](Corner a, Corner b, Corner c) {
        volume.Add(PointOf(field, a), PointOf(field, b), PointOf(field, c));
    });
}

template<class List>
bool AreFinite(const List& numbers)
{
    return std::all_of(numbers.begin(), numbers.end(), [](float number) { return std::isfinite(number); });
}

} // namespace

std::optional<double> ReliefVolume(const HeightField& field)
{
    if (!AreFinite(field.x) || !AreFinite(field.y) || !AreFinite(field.levels))
        return std::nullopt;
    // The first corner of the first face.
    const Point first = PointOf(field, {Corner::Level::Top, 0, 0});
    SignedVolume volume(first);
    const Vector3D<double> origin(double(first.x), double(first.y), double(first.z));
    AddTop(field, origin, volume);
    AddBottom(field, origin, volume);
    AddWalls(field, volume);
    return volume.Value();
}

} // namespace kr::image
