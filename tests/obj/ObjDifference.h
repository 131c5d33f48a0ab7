#pragma once

#include <string>
#include <vector>

#include "tests/obj/PlainObjReader.h"

class Mesh;

// What a load did otherwise than the plain readers; an empty text when all is the same. Numbers are compared
// bit by bit, but one NaN is as good as another.

namespace test {

/// Of the faces that were read those of vertices which there are must be in the mesh, in their order.
std::string DifferenceOf(const Mesh& mesh, const std::vector<MeshTextureGroup>& groups,
                         const PlainObj& expected);

std::string DifferenceOf(const std::vector<MeshMaterialInfo>& materials,
                         const std::vector<MeshMaterialInfo>& expected);

} // namespace test
