#pragma once

#include <QFile>

namespace kr {

/// Opens the file that @p file names, if it is a plain one. Readers take large blocks, so Qt keeps no buffer
/// of its own.
[[nodiscard]] bool OpenForReading(QFile& file);

/// Opens the file that @p file names for writing, emptied. Writers gather large blocks, so Qt keeps no buffer
/// of its own.
/// @param textMode  QIODevice::Text for line ends as the platform has them, or nothing
[[nodiscard]] bool OpenForWriting(QFile& file, QIODevice::OpenMode textMode = {});

} // namespace kr
