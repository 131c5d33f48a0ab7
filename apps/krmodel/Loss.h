#pragma once

#include <vector>

#include <QString>

#include "apps/krmodel/Formats.h"

namespace krmodel {

/// What a format cannot hold of a model, and what its rounding does to it.
/// @param from  the format that the model was loaded from
std::vector<Loss> FindOutputLosses(const Model& model, const Format& from, const Format& to,
                                   Encoding encoding);

/// A line for each on standard error: "krmodel: in.3mf: not carried: colours of 12 triangles".
void PrintLosses(const QString& fileName, const std::vector<Loss>& losses);

} // namespace krmodel
