#pragma once

#include "apps/krmodel/Formats.h"

/// The row of OBJ in the table of formats.
namespace krmodel::obj {

/// Takes a file in which there is not a vertex, face or material for one of another format: the library's
/// reader passes over all that it does not know.
std::optional<Refusal> Load(const QString& fileName, const ReadOptions& options, Model& model);
/// Writes texture coordinates for meshes that hold a texture, see HoldsTexture().
bool Save(const QString& fileName, const Model& model, Encoding encoding);
/// Whether there is a line for each face, and the last one is ended. Faces come last in the file.
bool IsComplete(const QString& fileName, const Model& model, Encoding encoding);
/// What the file declares and is not in the model that was loaded from it.
std::vector<Loss> Scan(const QString& fileName, const Model& model);

} // namespace krmodel::obj
