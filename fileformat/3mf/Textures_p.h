#pragma once

#include <algorithm>
#include <vector>

#include "fileformat/3mf/Model3MF.h"

namespace kr::package3mf {

/// The first texture of the id as a whole, or one with the id -1 if there is none.
inline Model3MF::Texture FindTexture(const std::vector<Model3MF::Texture>& textures, int id)
{
    const auto found = std::find_if(textures.begin(), textures.end(),
                                    [=](const Model3MF::Texture& texture) { return texture.id == id; });
    return found == textures.end() ? Model3MF::Texture() : *found;
}

} // namespace kr::package3mf
