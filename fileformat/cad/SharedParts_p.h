#pragma once

#include <cstddef>
#include <vector>

#include "fileformat/cad/ShapeWalk_p.h"

namespace kr::cad {

/// Indices of shapes, ascending.
using ShapeGroup = std::vector<std::size_t>;

/// Divides shapes into groups such that no face or edge is part of shapes of two groups. The mesher writes to
/// faces and edges, and solids of one compound may have them in common: such solids must be tessellated one
/// after another, different groups can be at once. In the order of their first shapes.
std::vector<ShapeGroup> GroupsWithoutSharedParts(const std::vector<PlacedShape>& shapes);

} // namespace kr::cad
