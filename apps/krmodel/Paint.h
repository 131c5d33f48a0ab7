#pragma once

#include "apps/krmodel/Look.h"
#include "core/mesh/MeshMaterialInfo.h"

namespace krmodel {

/// The colour of a surface: one all over, or that of a texture, which repeats itself in both directions.
class Paint {
public:
    /// The program's own colour.
    Paint();
    /// One colour all over.
    explicit Paint(const Colour& colour);
    /// The material's diffuse colour and texture; the program's own colour if it has neither.
    explicit Paint(const MeshMaterialInfo& material);

    bool HasTexture() const { return m_texture.isValidSize(); }
    Colour GetColour() const { return m_colour; }
    /// Only for a paint with a texture. @param u, v texture coordinates, (0, 0) in the texture's lower left
    /// corner
    Colour At(float u, float v) const;

private:
    Colour Texel(int column, int row) const;

    Colour m_colour;
    MeshTextureInfo m_texture;
};

} // namespace krmodel
