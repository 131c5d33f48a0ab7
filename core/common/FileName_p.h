#pragma once

#include <QFileInfo>
#include <QString>

namespace kr {

/// Whether a file can have the name. Qt prints about names that none can have, and opens for writing the file
/// whose name ends before a NUL.
inline bool CanNameAFile(const QString& name)
{
    return !name.isEmpty() && !name.contains(QChar::Null);
}

/// Whether the name is that of a plain file: opening a pipe would wait for somebody to write into it, and
/// reading from a device might never end.
inline bool IsPlainFile(const QString& name)
{
    return CanNameAFile(name) && QFileInfo(name).isFile();
}

} // namespace kr
