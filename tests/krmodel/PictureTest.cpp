#include "apps/krmodel/Picture.h"

#include <gtest/gtest.h>

#include <QBuffer>
#include <QtEndian>

#include <zlib.h>

namespace {

using krmodel::DecodePicture;
using krmodel::EncodePng;
using krmodel::IsPng;
using krmodel::PictureSize;

QImage Plain(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(qRgb(10, 200, 30));
    return image;
}

QByteArray Encoded(const QImage& image, const char* format)
{
    QBuffer buffer;
    EXPECT_TRUE(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, format));
    return buffer.data();
}

QByteArray BigEndian(quint32 value)
{
    QByteArray bytes(sizeof value, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

/// A small PNG whose header tells of another size.
QByteArray PngThatClaims(quint32 width, quint32 height)
{
    constexpr int kHeaderName = 12, kWidth = 16, kHeight = 20, kCheckSum = 29;
    QByteArray png = EncodePng(Plain(2, 2));
    png.replace(kWidth, 4, BigEndian(width)).replace(kHeight, 4, BigEndian(height));
    const QByteArray header = png.mid(kHeaderName, kCheckSum - kHeaderName);
    const uLong sum =
        crc32(0, reinterpret_cast<const Bytef*>(header.constData()), static_cast<uInt>(header.size()));
    return png.replace(kCheckSum, 4, BigEndian(static_cast<quint32>(sum)));
}

TEST(Picture, DecodesPngAndJpeg)
{
    for (const char* format : {"PNG", "JPG"}) {
        const QByteArray bytes = Encoded(Plain(6, 4), format);
        EXPECT_EQ(PictureSize(bytes), QSize(6, 4)) << format;
        EXPECT_EQ(DecodePicture(bytes).size(), QSize(6, 4)) << format;
        EXPECT_EQ(IsPng(bytes), *format == 'P');
    }
    EXPECT_EQ(DecodePicture(EncodePng(Plain(6, 4))).pixel(3, 2), qRgb(10, 200, 30));
}

TEST(Picture, KnowsNoOtherFormat)
{
    for (const QByteArray& bytes :
         {Encoded(Plain(6, 4), "BMP"), Encoded(Plain(6, 4), "PPM"), QByteArray("<svg width='9' height='9'/>"),
          QByteArray("text"), QByteArray()}) {
        EXPECT_TRUE(PictureSize(bytes).isEmpty()) << bytes.left(10).toStdString();
        EXPECT_TRUE(DecodePicture(bytes).isNull()) << bytes.left(10).toStdString();
    }
}

TEST(Picture, RefusesMorePixelsThanAThumbnailHas)
{
    EXPECT_EQ(PictureSize(PngThatClaims(4096, 4096)), QSize(4096, 4096));
    EXPECT_TRUE(PictureSize(PngThatClaims(4096, 4097)).isEmpty());
    EXPECT_TRUE(PictureSize(PngThatClaims(2'000'000'000, 2'000'000'000)).isEmpty());
    EXPECT_TRUE(DecodePicture(PngThatClaims(30'000, 30'000)).isNull());
}

TEST(Picture, IsNullWhenCutShort)
{
    const QByteArray png = EncodePng(Plain(64, 64));
    EXPECT_TRUE(DecodePicture(png.left(40)).isNull());
}

} // namespace
