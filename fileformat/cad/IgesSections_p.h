#pragma once

class QIODevice;

namespace kr::cad {

/// Whether an IGES file is whole, as far as its ending tells: it has a terminate record that counts as many
/// lines of each section as stand before it. OpenCASCADE follows the pointers of a file that was cut short
/// into nothing.
///
/// As tolerant as OpenCASCADE about all else: lines may end in any way or, if none does, be 80 bytes each.
/// Blank lines do not count. A line without a section's letter and a number in its last 8 columns, such as
/// one that letters of several bytes made longer, counts with the section of the line before it. What stands
/// behind the terminate record does not matter.
/// @param file  open for reading, at its beginning
[[nodiscard]] bool AreIgesSectionsWhole(QIODevice& file);

} // namespace kr::cad
