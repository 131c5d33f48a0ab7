#pragma once

#include <vector>

#include <QByteArray>
#include <QTextStream>

class Mesh;

namespace test {

/// What OBJFile::writeMesh() is to write, said once more as plainly as can be: a text stream for every word
/// and two ordered maps over all meshes, whose keys are shifted from mesh to mesh. The comparison for random
/// meshes. There must be a flag for each mesh; a negative index must not be in any but the first one.
void WriteLiterally(QTextStream& stream, const std::vector<const Mesh*>& meshes,
                    const std::vector<bool>& textureFlags, bool withNormals);

/// The whole file.
QByteArray LiteralOBJ(const std::vector<const Mesh*>& meshes, const std::vector<bool>& textureFlags,
                      bool withNormals);

} // namespace test
