#pragma once

#include <optional>

#include <QByteArray>

class QString;

namespace kr::texture {

/// What QByteArray::fromBase64(text.toLatin1()) gives, several times as fast: most of the time that a texture
/// takes to load beside decoding its picture would go there.
QByteArray BytesOfBase64(const QString& text);

/// The same for text that consists of base64 digits alone, with the padding at its end; nothing for any
/// other.
std::optional<QByteArray> BytesOfPureBase64(const QByteArray& text);

} // namespace kr::texture
