#pragma once

#include <optional>
#include <vector>

#include "core/math/TriangleFace.h"
#include "core/math/Vector2D.h"
#include "core/math/Vector3D.h"
#include "core/mesh/MeshMaterialInfo.h"
#include "core/mesh/MeshTextureGroup.h"

class QFile;
class QString;

// Readers of OBJ and MTL files as plain as can be: a byte at a time, decoded and split by Qt, each rule
// written down once more. The library reads blocks and takes words where they stand; both must always agree.

namespace test {

/// What an OBJ file says, before faces are checked.
struct PlainObj {
    std::vector<Vector3D<float>> vertices;
    std::vector<TriangleFace> faces;
    std::vector<Vector2D<float>> texCoords;
    std::vector<TriangleFace> textureFaces;
    std::vector<MeshTextureGroup> groups;
};

/// The next line of a file that is open in text mode, lines that belong together joined.
/// @return false at the end of the file and for a line that is too long
bool ReadPlainLine(QFile& file, QString& line);

/// Nothing for a file that cannot be opened.
std::optional<PlainObj> ReadPlainObj(const QString& fileName, int textureLoadOption);
std::optional<std::vector<MeshMaterialInfo>> ReadPlainMtl(const QString& fileName, int textureLoadOption);

} // namespace test
