#pragma once

#include <optional>

#include "apps/krmodel/Formats.h"
#include "apps/krmodel/PendingFile.h"

namespace krmodel {

struct LoadedModel {
    const Format* format = nullptr;
    Model model;
    double seconds = 0; ///< for the load alone
};

/// Reads a model file of any known format; it holds at least one facet.
/// @throws Failure with CannotOpen, NotReadable or Empty
LoadedModel LoadModel(const QString& fileName, const ReadOptions& options);

/// A file that is to be written, and how.
struct Output {
    PendingFile file;
    const Format* format = nullptr;
    Encoding encoding = Encoding::Binary;
};

/// The format of the file name's suffix, in the variant asked for; binary, if it has that, when none is.
/// @throws Failure with Usage for an unknown suffix, for a format that is only read and for a variant that
/// the
///         format does not have
Output ChooseOutput(const QString& fileName, std::optional<Encoding> encoding);

/// Writes a model, reads it back and compares it (see FindDifference()).
/// @throws Failure with WriteFailed
void WriteModel(const Output& output, const Model& model);

/// Writes a model so and puts it in the output's place.
/// @throws Failure with WriteFailed
void SaveModel(const Output& output, const Model& model);

} // namespace krmodel
