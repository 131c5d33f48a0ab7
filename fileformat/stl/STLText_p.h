#pragma once

#include <cstddef>
#include <optional>

#include "fileformat/common/BlockReader_p.h"
#include "fileformat/stl/STLSoup_p.h"

namespace kr::stl {

/// Reads the statements of a text file from its beginning: the first line is passed over, whatever it holds.
/// @param expectedCorners  corners to make room for at first; more are taken in all the same
/// @return nothing when a "normal" or "vertex" is not followed by three tokens
std::optional<TriangleSoup> ReadText(BlockReader& source, std::size_t expectedCorners);

} // namespace kr::stl
