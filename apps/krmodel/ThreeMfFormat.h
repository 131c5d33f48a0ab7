#pragma once

#include "apps/krmodel/Formats.h"

/// The row of 3MF in the table of formats.
namespace krmodel::threemf {

/// Tells apart what gives no objects: a file that is no archive, a package that names no model, a damaged
/// one, one without meshes.
std::optional<Refusal> Load(const QString& fileName, const ReadOptions& options, Model& model);

/// Each mesh becomes an object of its own with its name and placement, in the model's unit, the millimetre if
/// it names none. A package knows an object's place as floats, and all numbers have six significant digits.
/// A thumbnail becomes a PNG of the name that a package's relationships tell; one that cannot be decoded
/// stays as it is. The colours get an id beyond those of the objects unless theirs already is.
bool Save(const QString& fileName, const Model& model, Encoding encoding);

/// Whether the archive's end is there.
bool IsComplete(const QString& fileName, const Model& model, Encoding encoding);
/// What the file declares and is not in the model that was loaded from it.
std::vector<Loss> Scan(const QString& fileName, const Model& model);

} // namespace krmodel::threemf
