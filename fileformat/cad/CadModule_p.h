#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include <QString>

#include "core/mesh/Mesh.h"

namespace kr::cad {

enum class Format { Step, Iges };

using MeshList = std::vector<std::unique_ptr<Mesh>>;

struct Request {
    Format format = Format::Step;
    QString fileName;
    QString rootName; ///< in front of the names of all meshes; empty for none
    double deflection = 0;
    double angle = 0;
};

struct Import {
    std::size_t shapeCount = 0; ///< solids, shells and loose faces in the document
    MeshList meshes;            ///< of those that have a triangle, finished
};

/// What the library that holds OpenCASCADE does for this one; nothing when the file cannot be read or
/// transferred. Exceptions of OpenCASCADE pass through.
using ImportFunction = std::optional<Import> (*)(const Request&);

/// The only symbol of that library.
constexpr const char* kModuleEntry = "KRCoreCadImportFunction";
using ModuleEntry = ImportFunction (*)();

} // namespace kr::cad
