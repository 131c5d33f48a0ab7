#pragma once

#include "core/mesh/MeshMaterialInfo.h"

/// A run of a mesh's faces with one material. The group's name is the material's name. Plain value.
struct MeshTextureGroup {
    /// @{
    /// Marks for the host's own use; no reader sets them.
    bool isHidden = false;
    bool isSelected = false;
    /// @}

    int firstFaceIndex = -1;   ///< from 0; negative while the group has no face
    int faceCount = 0;         ///< how many follow from there
    MeshMaterialInfo material; ///< that all of them have
};
