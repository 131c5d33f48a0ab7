#include "fileformat/texture/ImageText_p.h"

#include <cstring>
#include <optional>

#include <QBuffer>
#include <QByteArray>

#include "core/mesh/MeshTextureInfo.h"
#include "core/utility/ImageTool.h"
#include "fileformat/texture/Base64_p.h"

namespace kr::texture {

namespace {

constexpr int kBytesPerPixel = 4;
constexpr int kMostPngBytes = 750'000'000;

// More than a mesh takes could be read, but not be handed on.
std::optional<QSize> WholeSize(const QSize& size)
{
    return MeshTextureInfo::IsLoadableSize(size) ? std::make_optional(size) : std::nullopt;
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
    QBuffer buffer(&file);
    QImage image;
    if (!ImageTool::ReadPicture(buffer, image, WholeSize))
        return {};
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
