#pragma once

#include "apps/krmodel/Formats.h"

/// The row of STL in the table of formats.
namespace krmodel::stl {

std::optional<Refusal> Load(const QString& fileName, const ReadOptions& options, Model& model);
bool Save(const QString& fileName, const Model& model, Encoding encoding);
bool IsComplete(const QString& fileName, const Model& model, Encoding encoding);
/// For files that Save() wrote. Unlike the reader, which stitches facets together and drops some, it takes
/// them as they are.
bool VisitFacets(const QString& fileName, Encoding encoding,
                 const std::function<void(const Facet& facet)>& visit);
QString Variant(const QString& fileName);
/// What the file declares and is not in the model that was loaded from it.
std::vector<Loss> Scan(const QString& fileName, const Model& model);

} // namespace krmodel::stl
