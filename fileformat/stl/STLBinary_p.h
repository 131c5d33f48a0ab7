#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "fileformat/stl/STLSoup_p.h"

class QIODevice;

namespace kr::stl {

/// The facets of a binary file, told from its size and the count that it claims.
/// The count must be the number of whole records behind it, where a last record without its attribute word
/// counts as whole if another one stands before it.
/// @param claimedCount  as stored; above 2^31 - 1 it would be negative and is refused
/// @return nothing when they disagree, when there is no facet, or more than can be stitched
std::optional<std::size_t> BinaryFacetCount(std::int64_t fileSize, int headerSize,
                                            std::uint32_t claimedCount);

/// Reads a whole binary file from its beginning.
/// @param device  open for reading, not sequential
std::optional<TriangleSoup> ReadBinary(QIODevice& device, int headerSize);

/// Reads facet records from the device's position on. A record that is cut short ends the reading; what there
/// is of its corners is kept, and all corners behind it are (0, 0, 0).
/// @return nothing when not even the first record's corners are there
std::optional<TriangleSoup> ReadFacetRecords(QIODevice& device, std::size_t facetCount);

} // namespace kr::stl
