#pragma once

#include <string>
#include <vector>

#include "fileformat/cad/CadModule_p.h"

namespace kr::cad {

/// Loads the first of these libraries that can be loaded, for good: OpenCASCADE keeps state that outlives
/// each file, and its threads may still run.
/// @throws std::runtime_error when there is none, or it is not the library that is looked for
ImportFunction LoadModule(const std::vector<std::string>& libraries);

/// The library beside the one that this code lies in, loaded at the first call.
/// @throws std::runtime_error as LoadModule(); the next call tries again
ImportFunction Module();

} // namespace kr::cad
