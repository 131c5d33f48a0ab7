#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <QByteArray>

namespace kr::package3mf {

/// Behind the XML declaration and the byte-order mark in front of it, or null if the document may be in
/// another encoding than UTF-8.
const char* SkipDeclaration(std::string_view document);

/// What Qt's XML reader reads behind the XML declaration, in whatever encoding the document is. A byte for
/// each UTF-16 unit, zero for those that Latin 1 does not have. Empty when an encoding is not known: the
/// reader refuses the document. Nothing when more than four encodings are declared, for each of which the
/// reader decodes all again, and that would be more than 256 MiB.
std::optional<std::string> DecodedBehindDeclaration(const QByteArray& document);

} // namespace kr::package3mf
