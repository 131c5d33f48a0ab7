#pragma once

#include <QByteArray>
#include <QImage>

/// Pictures that come out of model files: PNG and JPEG, whatever their names say, up to 16 million pixels. A
/// few bytes may claim to be more than memory holds.
namespace krmodel {

/// Width and height as the picture's header tells; a null size for bytes that are none of these pictures.
QSize PictureSize(const QByteArray& bytes);

bool IsPng(const QByteArray& bytes);

/// A null image when the bytes are none of these pictures, or damaged.
QImage DecodePicture(const QByteArray& bytes);

QByteArray EncodePng(const QImage& image);

} // namespace krmodel
