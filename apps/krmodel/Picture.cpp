#include "apps/krmodel/Picture.h"

#include <new>
#include <optional>

#include <QBuffer>
#include <QFileDevice>
#include <QFileInfo>

#include "core/utility/ImageTool.h"

namespace krmodel {

namespace {

constexpr qint64 kMostPixels = 16'777'216;

bool IsJpeg(const QByteArray& bytes)
{
    return bytes.startsWith("\xff\xd8");
}

bool Fits(QSize size)
{
    return !size.isEmpty() && qint64(size.width()) * size.height() <= kMostPixels;
}

/// As the header tells; a null size for what is no picture.
QSize AnnouncedSize(QIODevice& picture)
{
    QSize announced;
    QImage none;
    static_cast<void>(ImageTool::ReadPicture(picture, none, [&](const QSize& size) -> std::optional<QSize> {
        announced = size;
        return std::nullopt;
    }));
    return announced;
}

/// Qt would also find formats that a model file has no business with.
bool IsThumbnail(const QByteArray& bytes)
{
    return IsPng(bytes) || IsJpeg(bytes);
}

} // namespace

QSize PictureSize(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    const QSize size = IsThumbnail(bytes) ? AnnouncedSize(buffer) : QSize();
    return Fits(size) ? size : QSize();
}

bool IsPng(const QByteArray& bytes)
{
    return bytes.startsWith("\x89PNG\r\n\x1a\n");
}

void RequireRoomForPixels(QIODevice& picture, const std::function<bool(const QSize& size)>& isWanted)
{
    // At most 8 as decoded and 4 as used; and what decoders take for themselves.
    constexpr qint64 kBytesPerPixel = 12, kOthers = qint64(16) << 20;
    // A call of its own: the compiler may leave out a new expression of which nothing is used.
    const auto take = [](qint64 bytes) { ::operator delete(::operator new(size_t(bytes))); };
    take(kOthers);
    // Opening a pipe waits for somebody to write into it.
    const auto* const file = qobject_cast<const QFileDevice*>(&picture);
    if (file && !QFileInfo(file->fileName()).isFile())
        return;
    if (!(picture.isOpen() || picture.open(QIODevice::ReadOnly)) || !picture.seek(0))
        return;
    const QSize size = AnnouncedSize(picture);
    if (!size.isEmpty() && isWanted(size))
        take(kOthers + kBytesPerPixel * size.width() * size.height());
}

QImage DecodePicture(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImage picture;
    const auto choose = [](const QSize& size) {
        return Fits(size) ? std::make_optional(size) : std::nullopt;
    };
    return IsThumbnail(bytes) && ImageTool::ReadPicture(buffer, picture, choose) ? picture : QImage();
}

QByteArray EncodePng(const QImage& image)
{
    QBuffer png;
    png.open(QIODevice::WriteOnly);
    return image.save(&png, "PNG") ? png.data() : QByteArray();
}

} // namespace krmodel
