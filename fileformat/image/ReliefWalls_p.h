#pragma once

namespace kr::image {

/// A vertex of a relief: that of the top at this place of the grid, or that of the bottom under it.
struct Corner {
    enum class Level { Top, Bottom };

    Level level;
    int row;
    int column;
};

/// Calls addFace(corner, corner, corner) for the faces of the walls in their order: the sides y = 0, x =
/// sizeX, y = sizeY, x = 0, two faces for each edge of the top's border.
template<class AddFace>
void ForEachWallFace(int columns, int rows, AddFace addFace)
{
    const int lastColumn = columns - 1, lastRow = rows - 1;
    const auto top = [](int row, int column) { return Corner{Corner::Level::Top, row, column}; };
    const auto bottom = [](int row, int column) { return Corner{Corner::Level::Bottom, row, column}; };
    for (int c = 0; c < lastColumn; ++c) {
        addFace(top(lastRow, c + 1), top(lastRow, c), bottom(lastRow, c));
        addFace(top(lastRow, c + 1), bottom(lastRow, c), bottom(lastRow, c + 1));
    }
    for (int r = 0; r < lastRow; ++r) {
        addFace(top(r, lastColumn), top(r + 1, lastColumn), bottom(r + 1, lastColumn));
        addFace(top(r, lastColumn), bottom(r + 1, lastColumn), bottom(r, lastColumn));
    }
    for (int c = 0; c < lastColumn; ++c) {
        addFace(top(0, c), top(0, c + 1), bottom(0, c + 1));
        addFace(top(0, c), bottom(0, c + 1), bottom(0, c));
    }
    for (int r = 0; r < lastRow; ++r) {
        addFace(top(r, 0), bottom(r, 0), bottom(r + 1, 0));
        addFace(top(r, 0), bottom(r + 1, 0), top(r + 1, 0));
    }
}

} // namespace kr::image
