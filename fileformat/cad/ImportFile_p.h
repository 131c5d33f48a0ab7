#pragma once

#include <optional>

#include "fileformat/cad/CadModule_p.h"

namespace kr::cad {

/// The whole way from a file to finished meshes; see ImportFunction.
std::optional<Import> ImportFile(const Request& request);

} // namespace kr::cad
