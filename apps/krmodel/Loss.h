#pragma once

#include <vector>

#include <QString>

#include "apps/krmodel/Formats.h"

namespace krmodel {

/// What the library does not carry of a file.
/// @param fileName  read as a stream: memory does not grow with the file, but with the number of its objects
/// @param model     as loaded from the file
std::vector<Loss> FindInputLosses(const Format& format, const QString& fileName, const Model& model);

/// What a format cannot hold of a model, and what its rounding does to it.
/// @param from  the format that the model was loaded from
std::vector<Loss> FindOutputLosses(const Model& model, const Format& from, const Format& to,
                                   Encoding encoding);

/// A line for each on standard error: "krmodel: in.3mf: not carried: colours of 12 triangles".
void PrintLosses(const QString& fileName, const std::vector<Loss>& losses);

} // namespace krmodel
