#pragma once

#include <map>

#include <QString>

#include "fileformat/path/DXFPathFile.h"

namespace krmodel {

/// What a path file holds.
struct PathFile {
    DXFPathFile::Paths paths;
    std::map<int, QString> names; ///< by the id of their set
};

/// A box around points; that of no point holds nothing.
struct PathBounds {
    Vector2D<double> minimum;
    Vector2D<double> maximum;
    bool isEmpty = true;

    void Include(const Vector2D<double>& point);
};

struct PathMeasures {
    qint64 contours = 0;
    qint64 closed = 0;
    qint64 points = 0;
    PathBounds bounds; ///< of all points that are finite

    void Add(const DXFPathFile::Contour& contour);
};

PathMeasures Measure(const DXFPathFile::Paths& paths);

/// Whether the last point is the first one again. The format has no other mark; there must be a point between
/// them, else it would be a stroke or a dot.
bool IsClosed(const DXFPathFile::Contour& contour);

bool IsFinite(const Vector2D<double>& point);

/// What the file holds together, then a line for each of the first sets.
QString PathTables(const PathFile& file);

} // namespace krmodel
