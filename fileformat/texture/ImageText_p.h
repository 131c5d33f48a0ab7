#pragma once

#include <QImage>
#include <QString>

class QByteArray;

namespace kr::texture {

/// The picture as a PNG file in base64; empty when there is none, it cannot be encoded or it is too long.
QString TextOfImage(const QImage& image);

/// PNG bytes in base64; empty for more than 750,000,000 bytes, with which a document could not be read again.
QString TextOfFile(const QByteArray& png);

/// The picture that is stored as base64, whatever its format, opaque as QImage::Format_RGB32. Null when there
/// is none, and for one that asks for too many pixels, judged before it is decoded.
QImage ImageOfText(const QString& text);

/// The same for the bytes of the picture's file.
QImage ImageOfFile(QByteArray file);

/// A picture of 4 bytes a pixel without gaps, bottom row first, turned upright.
QImage UprightImage(const QByteArray& pixels, int width, int height);

} // namespace kr::texture
