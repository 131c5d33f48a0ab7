#pragma once

class QIODevice;

namespace kr::cad {

/// Whether an IGES file is whole, as far as its ending tells: a terminate record that counts as many lines of
/// each section as stand before it. OpenCASCADE follows the pointers of a file that was cut short into
/// nothing.
/// @param file  open for reading, at its beginning
[[nodiscard]] bool AreIgesSectionsWhole(QIODevice& file);

} // namespace kr::cad
