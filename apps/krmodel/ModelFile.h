#pragma once

#include "apps/krmodel/Formats.h"

namespace krmodel {

struct LoadedModel {
    const Format* format = nullptr;
    Model model;
    double seconds = 0; ///< for the load alone
};

/// Reads a model file of any known format; it holds at least one facet.
/// @throws Failure with CannotOpen, NotReadable or Empty
LoadedModel LoadModel(const QString& fileName);

/// Writes a model in the format of the file name's suffix and looks whether all of it arrived.
/// @throws Failure with Usage for an unknown suffix, or WriteFailed
void SaveModel(const QString& fileName, const Model& model, Encoding encoding);

/// The format of a file that is to be written.
/// @throws Failure with Usage for an unknown suffix
const Format& OutputFormat(const QString& fileName);

} // namespace krmodel
