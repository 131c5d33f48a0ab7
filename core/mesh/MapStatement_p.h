#pragma once

#include <QString>
#include <QStringList>

namespace kr {

/// The file names that a map statement of a material library may mean, the likeliest first; empty when it
/// names none. Directories are separated by '/', quotes around a name are gone.
/// @param tokens  keyword, options, file name, split at blanks
QStringList FileNamesOfMapStatement(const QStringList& tokens);

/// The paths at which the file may be, the likeliest first.
/// @param directory  of the material library, with its trailing separator or empty
QStringList PathsOfMapFile(const QString& fileName, const QString& directory);

} // namespace kr
