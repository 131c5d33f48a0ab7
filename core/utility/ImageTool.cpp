#include "core/utility/ImageTool.h"

#include "core/utility/StackBlur_p.h"

#include <QBuffer>
#include <QByteArray>
#include <QString>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace {

// Runs `change` over the pixels of a 32-bit image, row by row.
template<class Change>
void ForEachPixel(QImage& image, Change change)
{
    uchar* bits = image.bits();
    if (!bits)
        return;
    const qsizetype stride = image.bytesPerLine();
    for (int y = 0; y < image.height(); ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(bits + y * stride);
        std::transform(row, row + image.width(), row, change);
    }
}

void ConvertTo(QImage& image, QImage::Format format)
{
    if (image.format() != format)
        image = std::move(image).convertToFormat(format);
}

// Premultiplied colour is what falls on the background; white shows through by what alpha leaves.
QRgb LaidOnWhite(QRgb premultiplied)
{
    const QRgb white = 0xff - (premultiplied >> 24);
    return 0xff000000 | ((premultiplied & 0xffffff) + white * 0x010101);
}

// 0 for formats whose pixels are not whole bytes or need a colour table.
int BytesPerPixel(QImage::Format format)
{
    if (format <= QImage::Format_Invalid || format >= QImage::NImageFormats ||
        format == QImage::Format_Indexed8)
        return 0;
    const int bits = QImage(1, 1, format).depth();
    return bits % 8 == 0 ? bits / 8 : 0;
}

bool AreRawPixels(const QByteArray& pixels, int width, int height, QImage::Format format, int bytesPerPixel)
{
    if (width <= 0 || height <= 0 || bytesPerPixel <= 0 || bytesPerPixel != BytesPerPixel(format))
        return false;
    // By division: the product of three numbers from outside need not fit even 64 bits.
    return pixels.size() / bytesPerPixel / width >= height;
}

// Qt reads whole pixels, the largest of 8 bytes, and expects them where a pixel may be; bytes that only look
// at foreign memory may lie anywhere.
QByteArray Aligned(const QByteArray& bytes)
{
    const bool isAligned = reinterpret_cast<std::uintptr_t>(bytes.constData()) % sizeof(quint64) == 0;
    return isAligned ? bytes : QByteArray(bytes.constData(), bytes.size());
}

} // namespace

void ImageTool::ConvertToGrayScaleImage(QImage& image)
{
    ConvertTo(image, QImage::Format_RGB32);
    ForEachPixel(image, [](QRgb pixel) { return 0xff000000 | static_cast<QRgb>(qGray(pixel)) * 0x010101; });
}

void ImageTool::StackBlur(QImage& image, int radius)
{
    if (image.isNull() || radius <= 0)
        return;
    const QImage::Format given = image.format();
    ConvertTo(image, image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    if (uchar* bits = image.bits())
        kr::StackBlur({bits, image.width(), image.height(), image.bytesPerLine()}, radius);
    if (given == QImage::Format_ARGB32)
        ConvertTo(image, given);
}

void ImageTool::ConvertToTextureImageAndFixBackground(QImage& image)
{
    if (!image.hasAlphaChannel()) {
        ConvertTo(image, QImage::Format_RGB32);
        return;
    }
    ConvertTo(image, QImage::Format_ARGB32_Premultiplied);
    ForEachPixel(image, LaidOnWhite);
    image.reinterpretAsFormat(QImage::Format_RGB32);
}

bool ImageTool::ConvertToPNGImageBuffer(QByteArray& out, const QByteArray& in, int width, int height,
                                        QImage::Format format, int bytesPerPixel, QString fileFormat)
{
    const QByteArray pixels = Aligned(in); // a reference: `in` may be `out`
    out.clear();
    if (!AreRawPixels(pixels, width, height, format, bytesPerPixel))
        return false;
    const QImage image(reinterpret_cast<const uchar*>(pixels.constData()), width, height,
                       width * bytesPerPixel, format);
    QBuffer file(&out);
    if (file.open(QIODevice::WriteOnly) && image.save(&file, std::move(fileFormat).toLatin1().constData()))
        return true;
    out.clear();
    return false;
}
