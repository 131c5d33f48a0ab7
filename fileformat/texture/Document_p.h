#pragma once

#include <optional>

#include <QByteArray>
#include <QJsonDocument>

namespace kr::texture {

inline constexpr const char* kImageDataKey = "image_data";

/// A parsed texture document.
struct Document {
    QJsonDocument json; ///< null when the bytes are no JSON document
    /// The picture's file, when its text was decoded apart; what @ref json then holds for it means nothing.
    std::optional<QByteArray> pictureFile;
};

/// Parses the bytes of a texture document, with the same result as QJsonDocument::fromJson().
Document ParseDocument(const QByteArray& bytes);

} // namespace kr::texture
