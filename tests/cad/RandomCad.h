#pragma once

#include <random>
#include <vector>

#include "tests/cad/CadFiles.h"

namespace test {

/// Parts and assemblies up to three levels deep, some of them in several places, with all kinds of shapes and
/// names: solids, shells, faces, compounds, wires; named, unnamed, and named as @p fileName.
std::vector<CadPartPointer> RandomCadDocument(std::mt19937& random, const QString& fileName);

} // namespace test
