#include "fileformat/texture/ImageText_p.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>
#include <QtEndian>

#include "core/utility/ImageTool.h"
#include "fileformat/texture/Base64_p.h"

namespace kr::texture {

namespace {

constexpr int kBytesPerPixel = 4;
constexpr int kMostPngBytes = 750'000'000;

// What a mesh takes as a texture; more could be read, but not be handed on.
constexpr int kMaxSide = 32768;
constexpr qint64 kMaxPixels = (qint64(1) << 30) / kBytesPerPixel;

bool IsAcceptable(qint64 width, qint64 height)
{
    return width > 0 && height > 0 && std::max(width, height) <= qint64(kMaxSide) &&
           width * height <= kMaxPixels;
}

const QByteArray kPngSignature = QByteArrayLiteral("\x89PNG\r\n\x1a\n");

// PNG file: signature of 8 bytes, length and name of the first chunk, then
//   width    uint32, big-endian
//   height   uint32, big-endian
// An icon's directory says one size and a PNG file inside may have any other, which is the one that Qt takes.
bool HasAcceptablePngFiles(const QByteArray& bytes)
{
    constexpr int kSizeOffset = 16, kSizeEnd = 24;
    for (int at = bytes.indexOf(kPngSignature); at >= 0; at = bytes.indexOf(kPngSignature, at + 1)) {
        if (bytes.size() - at < kSizeEnd)
            return true; // cut off before it has a size
        const char* const size = bytes.constData() + at + kSizeOffset;
        if (!IsAcceptable(qFromBigEndian<quint32>(size), qFromBigEndian<quint32>(size + 4)))
            return false;
    }
    return true;
}

// A picture whose rows run from the top has a negative height in BMP files.
QSize SizeOf(const QImageReader& reader)
{
    const QSize size = reader.size();
    return {size.width(), size.height() >= -kMaxSide ? std::abs(size.height()) : 0};
}

// Of files that are cut short some readers give what was there, and set only those pixels: the others must
// not show what the memory held before.
QImage ReadOnBlack(QImageReader& reader, const QSize& size)
{
    QImage image(size, reader.imageFormat());
    image.fill(Qt::black);
    return reader.read(&image) ? image : QImage();
}

// A few hundred bytes of file may ask for gigabytes of pixels.
QImage Decoded(QByteArray& file)
{
    QBuffer buffer(&file);
    QImageReader reader(&buffer);
    const QSize size = SizeOf(reader);
    if (!IsAcceptable(size.width(), size.height()))
        return {};
    if (file.startsWith(kPngSignature))
        return reader.read(); // whole or not at all
    return HasAcceptablePngFiles(file) ? ReadOnBlack(reader, size) : QImage();
}

} // namespace

QString TextOfFile(const QByteArray& png)
{
    return png.size() <= kMostPngBytes ? QString::fromLatin1(png.toBase64()) : QString();
}

QString TextOfImage(const QImage& image)
{
    const auto* const bits = reinterpret_cast<const char*>(image.constBits());
    const QByteArray pixels = QByteArray::fromRawData(bits, static_cast<int>(image.sizeInBytes()));
    QByteArray png;
    ImageTool::ConvertToPNGImageBuffer(png, pixels, image.width(), image.height(), QImage::Format_RGB32,
                                       kBytesPerPixel, QStringLiteral("PNG"));
    return TextOfFile(png);
}

QImage ImageOfText(const QString& text)
{
    return ImageOfFile(BytesOfBase64(text));
}

QImage ImageOfFile(QByteArray file)
{
    QImage image = Decoded(file);
    ImageTool::ConvertToTextureImageAndFixBackground(image);
    return image;
}

QImage UprightImage(const QByteArray& pixels, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    if (image.isNull())
        return image; // there is no memory for it
    const auto rowBytes = static_cast<std::size_t>(width) * kBytesPerPixel;
    const char* row = pixels.constData();
    for (int y = height - 1; y >= 0; --y, row += rowBytes)
        std::memcpy(image.scanLine(y), row, rowBytes);
    return image;
}

} // namespace kr::texture
