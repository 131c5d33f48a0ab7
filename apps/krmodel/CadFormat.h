#pragma once

#include "apps/krmodel/Formats.h"

/// STEP and IGES, as the format table wants them.
namespace krmodel::cad {

std::optional<Refusal> LoadStep(const QString& fileName, const ReadOptions& options, Model& model);
std::optional<Refusal> LoadIges(const QString& fileName, const ReadOptions& options, Model& model);

} // namespace krmodel::cad
