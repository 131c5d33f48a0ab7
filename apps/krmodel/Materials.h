#pragma once

#include <optional>

#include "apps/krmodel/Formats.h"

namespace krmodel {

/// All groups of one name together.
struct MaterialUse {
    const MeshMaterialInfo* material = nullptr; ///< the first group's
    qint64 groupCount = 0;
    qint64 faceCount = 0;
    /// The first face in any of them, if it has one and it is certain which; see GroupOfEachFace().
    std::optional<qint64> firstFaceIndex;
};

/// In the order in which the names first appear. The materials are those of the model's groups.
std::vector<MaterialUse> SumUpByName(const Model& model);

/// Whether a library says anything about the material but its name. One that was not found does not differ
/// from one without a statement.
bool IsDescribed(const MeshMaterialInfo& material);

/// A picture that a material names.
struct MaterialTexture {
    const char* kind; ///< "diffuse", "emissive", "opacity" or "bump"
    const MeshTextureInfo* texture;
};
std::vector<MaterialTexture> TexturesOf(const MeshMaterialInfo& material);

/// For each face of a model's first mesh the index of its group, -1 for faces before the first group. Groups
/// follow each other without gaps from the first one's first face to the last face. When their counts tell
/// otherwise, because a face of the file was dropped, nobody knows which belongs where: the list is empty.
std::vector<int> GroupOfEachFace(const Model& model);

/// Whether each face has a texture face, and each of these three texture coordinates. Readers check neither.
bool HoldsTexture(const Mesh& mesh);

} // namespace krmodel
