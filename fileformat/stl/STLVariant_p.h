#pragma once

class QIODevice;

namespace kr::stl {

enum class Variant { Unreadable, Text, Binary };

/// Tells the variant of a file that @p device reads from its beginning. It stands somewhere behind then.
/// @return Unreadable for fewer than five bytes, and when a read fails
[[nodiscard]] Variant FindVariant(QIODevice& device);

} // namespace kr::stl
