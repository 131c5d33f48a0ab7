#pragma once

#include "apps/krmodel/Formats.h"

/// STEP and IGES, as the format table wants them.
namespace krmodel::cad {

std::optional<Refusal> LoadStep(const QString& fileName, const ReadOptions& options, Model& model);
std::optional<Refusal> LoadIges(const QString& fileName, const ReadOptions& options, Model& model);

/// What the file declares and is not in the model that was loaded from it.
std::vector<Loss> ScanStep(const QString& fileName, const Model& model);
std::vector<Loss> ScanIges(const QString& fileName, const Model& model);

} // namespace krmodel::cad
