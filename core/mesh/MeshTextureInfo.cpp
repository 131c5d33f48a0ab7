#include "core/mesh/MeshTextureInfo.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include <QFile>
#include <QImage>
#include <QStringList>

#include "core/common/FileName_p.h"
#include "core/mesh/MapStatement_p.h"
#include "core/utility/ImageTool.h"

namespace {

constexpr int kBytesPerPixel = 4;
constexpr int kMaxSide = 32768;
constexpr qint64 kMaxBytes = qint64(1) << 30;

QSize ScaledSize(const QSize& size, int longestSide)
{
    if (longestSide <= 0 || std::max(size.width(), size.height()) <= longestSide)
        return size;
    // A long strip keeps a pixel of width.
    return size.scaled(longestSide, longestSide, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

// A null image when the file is no picture, or one whose size is not told before decoding or not loadable.
QImage ReadPicture(const QString& path, int longestSide)
{
    QFile file(path);
    QImage image;
    const auto shrunkSize = [longestSide](const QSize& size) {
        return MeshTextureInfo::IsLoadableSize(size) ? std::make_optional(ScaledSize(size, longestSide))
                                                     : std::nullopt;
    };
    return ImageTool::ReadPicture(file, image, shrunkSize) ? image : QImage();
}

QImage Shrunk(const QImage& image, int longestSide)
{
    const QSize size = ScaledSize(image.size(), longestSide);
    return size == image.size() ? image : image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QByteArray PixelsOf(const QImage& image, bool bottomRowFirst)
{
    const int rowBytes = image.width() * kBytesPerPixel;
    const int height = image.height();
    QByteArray pixels(rowBytes * height, Qt::Uninitialized);
    for (int row = 0; row < height; ++row) {
        const int source = bottomRowFirst ? height - 1 - row : row;
        std::memcpy(pixels.data() + qsizetype(row) * rowBytes, image.constScanLine(source),
                    std::size_t(rowBytes));
    }
    return pixels;
}

} // namespace

bool MeshTextureInfo::load(const QStringList& tokens, const QString& directory, int longestSide)
{
    clear();
    fileName = FindFile(tokens, directory);
    return kr::IsPlainFile(fileName) &&
           load(ReadPicture(fileName, longestSide), false, false, false, longestSide);
}

QString MeshTextureInfo::FindFile(const QStringList& tokens, const QString& directory)
{
    QStringList paths;
    for (const QString& name : kr::FileNamesOfMapStatement(tokens))
        paths += kr::PathsOfMapFile(name, directory);
    const auto found = std::find_if(paths.begin(), paths.end(), kr::IsPlainFile);
    return found == paths.end() ? paths.value(0) : *found;
}

bool MeshTextureInfo::load(const QImage& image, bool mirrorHorizontally, bool mirrorVertically,
                           bool swapRedAndBlue, int longestSide)
{
    QImage picture = IsLoadableSize(image.size()) ? Shrunk(image, longestSide) : QImage();
    ImageTool::ConvertToTextureImageAndFixBackground(picture);
    if (mirrorHorizontally)
        picture = picture.mirrored(true, false);
    if (swapRedAndBlue)
        picture = picture.rgbSwapped();
    // Only now: the image may look at the pixels held so far.
    width = picture.width();
    height = picture.height();
    pixels = PixelsOf(picture, !mirrorVertically);
    return isValidSize();
}

bool MeshTextureInfo::IsLoadableSize(const QSize& size)
{
    return !size.isEmpty() && std::max(size.width(), size.height()) <= kMaxSide &&
           qint64(size.width()) * size.height() * kBytesPerPixel <= kMaxBytes;
}

void MeshTextureInfo::clear()
{
    *this = MeshTextureInfo();
}

bool MeshTextureInfo::isValidSize() const
{
    // Four times the product of two ints may not even fit 64 bits.
    return width > 0 && height > 0 && pixels.size() % kBytesPerPixel == 0 &&
           qint64(width) * height == pixels.size() / kBytesPerPixel;
}
