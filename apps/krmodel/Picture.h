#pragma once

#include <functional>

#include <QByteArray>
#include <QImage>

class QIODevice;

/// Pictures that come out of model files: PNG and JPEG, whatever their names say, up to 16 million pixels. A
/// few bytes may claim to be more than memory holds.
namespace krmodel {

/// Width and height as the picture's header tells; a null size for bytes that are none of these pictures.
QSize PictureSize(const QByteArray& bytes);

bool IsPng(const QByteArray& bytes);

/// A null image when the bytes are none of these pictures, or damaged.
QImage DecodePicture(const QByteArray& bytes);

QByteArray EncodePng(const QImage& image);

/// Called when a picture could not be read. The reader tells one that does not fit into memory no different
/// from one that is damaged.
/// @param picture   random-access, opened if it is not yet; read from its begin
/// @param isWanted  whether a picture of this size would be read at all
/// @throws std::bad_alloc when there is no memory for its pixels, however good the rest of it may be
void RequireRoomForPixels(QIODevice& picture, const std::function<bool(const QSize& size)>& isWanted);

} // namespace krmodel
