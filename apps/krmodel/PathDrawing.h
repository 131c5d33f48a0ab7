#pragma once

#include <QImage>
#include <QSize>

#include "fileformat/path/DXFPathFile.h"

namespace krmodel {

/// Draws contours in their proportions, y upwards, as large as they fit into the picture. What closed
/// contours of a set enclose is filled, but for holes: what an even number of them encloses. A point that is
/// not finite interrupts its contour, and it is not filled then.
QImage DrawPaths(const DXFPathFile::Paths& paths, QSize size);

} // namespace krmodel
