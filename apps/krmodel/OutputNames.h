#pragma once

#include <QStringList>

namespace krmodel {

/// For each input a file of its name with another suffix, beside it or in the directory, if one is named.
/// "-", standard input, is called "stdin".
/// @throws Failure with Usage when one of them is an input, or two are one
QStringList NameOutputs(const QStringList& inputs, const QString& directory, const QString& suffix);

/// "-", which stands for standard input or output.
bool IsStandard(const QString& name);

/// Whether two names lead to one file.
bool AreOneFile(const QString& name, const QString& other);

/// The file of the object of this number, counted from 1: "part.stl" gives "part-1.stl".
QString NumberedName(const QString& fileName, size_t number);

} // namespace krmodel
