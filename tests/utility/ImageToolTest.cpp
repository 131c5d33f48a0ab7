#include "core/utility/ImageTool.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QString>

#include <climits>
#include <random>

namespace {

QImage RandomImage(std::mt19937& random, int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, static_cast<QRgb>(random()));
    return image;
}

QImage OnePixel(QRgb pixel, QImage::Format format = QImage::Format_ARGB32)
{
    QImage image(1, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, pixel);
    return image.convertToFormat(format);
}

QRgb GreyOf(QImage image)
{
    ImageTool::ConvertToGrayScaleImage(image);
    return image.pixel(0, 0);
}

QRgb TextureOf(QImage image)
{
    ImageTool::ConvertToTextureImageAndFixBackground(image);
    EXPECT_EQ(image.format(), QImage::Format_RGB32);
    return image.pixel(0, 0);
}

const QString kPng = QStringLiteral("PNG");

// A 2 x 3 picture of these bytes a pixel.
QByteArray RawPixels(int bytesPerPixel)
{
    QByteArray bytes;
    for (int i = 0; i < 6 * bytesPerPixel; ++i)
        bytes.append(static_cast<char>(i * 37 + 11));
    return bytes;
}

bool Encodes(const QByteArray& in, int width, int height, QImage::Format format, int bytesPerPixel,
             const QString& fileFormat = kPng)
{
    QByteArray out("old");
    const bool isEncoded =
        ImageTool::ConvertToPNGImageBuffer(out, in, width, height, format, bytesPerPixel, fileFormat);
    EXPECT_EQ(out.isEmpty(), !isEncoded);
    return isEncoded;
}

} // namespace

TEST(GrayScale, GivesEqualChannelsByQtsFormula)
{
    EXPECT_EQ(GreyOf(OnePixel(qRgb(255, 0, 0))), qRgb(87, 87, 87));
    EXPECT_EQ(GreyOf(OnePixel(qRgb(0, 255, 0))), qRgb(127, 127, 127));
    EXPECT_EQ(GreyOf(OnePixel(qRgb(0, 0, 255))), qRgb(39, 39, 39));
    EXPECT_EQ(GreyOf(OnePixel(qRgb(255, 255, 255))), qRgb(255, 255, 255));
    EXPECT_EQ(GreyOf(OnePixel(qRgb(0, 0, 0))), qRgb(0, 0, 0));
}

TEST(GrayScale, AgreesWithQtForRandomColours)
{
    std::mt19937 random(31);
    const QImage before = RandomImage(random, 61, 53).convertToFormat(QImage::Format_RGB32);
    QImage image = before;
    ImageTool::ConvertToGrayScaleImage(image);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const int grey = qGray(before.pixel(x, y));
            ASSERT_EQ(image.pixel(x, y), qRgb(grey, grey, grey));
        }
}

TEST(GrayScale, KeepsGreyLevels)
{
    for (int level = 0; level < 256; ++level)
        EXPECT_EQ(GreyOf(OnePixel(qRgb(level, level, level))), qRgb(level, level, level));
}

TEST(GrayScale, GivesFourBytesAPixelInContiguousRows)
{
    std::mt19937 random(32);
    for (const QImage::Format format :
         {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_RGB16, QImage::Format_RGB888,
          QImage::Format_Grayscale8, QImage::Format_Grayscale16, QImage::Format_RGBA64,
          QImage::Format_ARGB32}) {
        QImage image = RandomImage(random, 13, 5).convertToFormat(format);
        ImageTool::ConvertToGrayScaleImage(image);
        EXPECT_EQ(image.format(), QImage::Format_RGB32);
        EXPECT_EQ(image.bytesPerLine(), 13 * 4);
        EXPECT_EQ(image.size(), QSize(13, 5));
        EXPECT_TRUE(image.allGray());
    }
}

TEST(GrayScale, CountsTransparentPixelsWithTheirColour)
{
    EXPECT_EQ(GreyOf(OnePixel(qRgba(80, 80, 80, 0))), qRgb(80, 80, 80));
    EXPECT_EQ(GreyOf(OnePixel(qRgba(80, 80, 80, 127))), qRgb(80, 80, 80));
}

TEST(GrayScale, SetsTheUnusedByte)
{
    QImage image(1, 1, QImage::Format_RGB32);
    *reinterpret_cast<QRgb*>(image.bits()) = 0x00ffffff;
    ImageTool::ConvertToGrayScaleImage(image);
    EXPECT_EQ(*reinterpret_cast<const QRgb*>(image.constBits()), 0xffffffffu);
}

TEST(GrayScale, LeavesANullImageAndCopies)
{
    QImage null;
    ImageTool::ConvertToGrayScaleImage(null);
    EXPECT_TRUE(null.isNull());

    QImage image = OnePixel(qRgb(255, 0, 0), QImage::Format_RGB32);
    const QImage shared = image;
    ImageTool::ConvertToGrayScaleImage(image);
    EXPECT_EQ(shared.pixel(0, 0), qRgb(255, 0, 0));
}

TEST(TextureImage, LaysTransparencyOnWhite)
{
    EXPECT_EQ(TextureOf(OnePixel(qRgba(0, 0, 0, 0))), qRgb(255, 255, 255));
    EXPECT_EQ(TextureOf(OnePixel(qRgba(255, 0, 0, 0))), qRgb(255, 255, 255));
    EXPECT_EQ(TextureOf(OnePixel(qRgba(0, 0, 0, 51))), qRgb(204, 204, 204));
    EXPECT_EQ(TextureOf(OnePixel(qRgba(255, 0, 0, 127))), qRgb(255, 128, 128));
    EXPECT_EQ(TextureOf(OnePixel(qRgba(0, 0, 0, 0), QImage::Format_RGBA64)), qRgb(255, 255, 255));
}

TEST(TextureImage, KeepsOpaqueColours)
{
    std::mt19937 random(33);
    const QImage opaque = RandomImage(random, 40, 30).convertToFormat(QImage::Format_RGB32);
    for (const QImage::Format format : {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGB888,
                                        QImage::Format_ARGB32_Premultiplied}) {
        QImage image = opaque.convertToFormat(format);
        ImageTool::ConvertToTextureImageAndFixBackground(image);
        EXPECT_EQ(image.format(), QImage::Format_RGB32);
        EXPECT_EQ(image, opaque);
    }
}

TEST(TextureImage, MixesWithinOneLevelOfTheExactMean)
{
    std::mt19937 random(34);
    const QImage before = RandomImage(random, 100, 100);
    QImage image = before;
    ImageTool::ConvertToTextureImageAndFixBackground(image);
    const auto exact = [](int colour, int alpha) { return (colour * alpha + 255.0 * (255 - alpha)) / 255.0; };
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x) {
            const QRgb given = before.pixel(x, y);
            const QRgb mixed = image.pixel(x, y);
            ASSERT_NEAR(qRed(mixed), exact(qRed(given), qAlpha(given)), 1.0);
            ASSERT_NEAR(qGreen(mixed), exact(qGreen(given), qAlpha(given)), 1.0);
            ASSERT_NEAR(qBlue(mixed), exact(qBlue(given), qAlpha(given)), 1.0);
            ASSERT_EQ(qAlpha(mixed), 255);
        }
}

TEST(TextureImage, KnowsTransparentPaletteColours)
{
    QImage image(2, 1, QImage::Format_Indexed8);
    image.setColorTable({qRgba(0, 0, 0, 0), qRgb(10, 20, 30)});
    image.setPixel(0, 0, 0);
    image.setPixel(1, 0, 1);
    ImageTool::ConvertToTextureImageAndFixBackground(image);
    EXPECT_EQ(image.pixel(0, 0), qRgb(255, 255, 255));
    EXPECT_EQ(image.pixel(1, 0), qRgb(10, 20, 30));
}

TEST(TextureImage, LeavesANullImageAndCopies)
{
    QImage null;
    ImageTool::ConvertToTextureImageAndFixBackground(null);
    EXPECT_TRUE(null.isNull());

    QImage image = OnePixel(qRgba(1, 2, 3, 4), QImage::Format_ARGB32_Premultiplied);
    const QImage shared = image;
    const QImage before = image.copy();
    ImageTool::ConvertToTextureImageAndFixBackground(image);
    EXPECT_EQ(shared, before);
    EXPECT_EQ(shared.format(), QImage::Format_ARGB32_Premultiplied);
}

TEST(ImageBuffer, EncodesTheRowsFromTheTop)
{
    const QByteArray raw = RawPixels(4);
    QByteArray png;
    ASSERT_TRUE(ImageTool::ConvertToPNGImageBuffer(png, raw, 2, 3, QImage::Format_RGB32, 4, kPng));
    EXPECT_TRUE(png.startsWith("\x89PNG\r\n\x1a\n"));
    const QImage image = QImage::fromData(png, "PNG");
    ASSERT_EQ(image.size(), QSize(2, 3));
    for (int i = 0; i < 6; ++i) {
        const auto byte = [&](int channel) { return static_cast<uchar>(raw.at(i * 4 + channel)); };
        EXPECT_EQ(image.pixel(i % 2, i / 2), qRgb(byte(2), byte(1), byte(0))) << i;
    }
}

TEST(ImageBuffer, TakesTightRowsOfEveryFormatOfWholeBytes)
{
    std::mt19937 random(35);
    const QImage source = RandomImage(random, 3, 2);
    for (int number = QImage::Format_RGB32; number < QImage::NImageFormats; ++number) {
        const auto format = static_cast<QImage::Format>(number);
        const QImage image = source.convertToFormat(format);
        const int bytesPerPixel = image.depth() / 8;
        QByteArray raw;
        for (int y = 0; y < 2; ++y)
            raw.append(reinterpret_cast<const char*>(image.constScanLine(y)), 3 * bytesPerPixel);
        QByteArray png;
        ASSERT_TRUE(ImageTool::ConvertToPNGImageBuffer(png, raw, 3, 2, format, bytesPerPixel, kPng))
            << number;
        const QImage decoded = QImage::fromData(png, "PNG").convertToFormat(QImage::Format_ARGB32);
        EXPECT_EQ(decoded, image.convertToFormat(QImage::Format_ARGB32)) << number;
    }
}

TEST(ImageBuffer, WritesOtherFileFormatsToo)
{
    QByteArray bmp;
    ASSERT_TRUE(ImageTool::ConvertToPNGImageBuffer(bmp, RawPixels(4), 2, 3, QImage::Format_RGB32, 4,
                                                   QStringLiteral("bmp")));
    EXPECT_TRUE(bmp.startsWith("BM"));
}

TEST(ImageBuffer, IgnoresBytesBehindTheLastRow)
{
    QByteArray exact;
    QByteArray longer;
    ASSERT_TRUE(ImageTool::ConvertToPNGImageBuffer(exact, RawPixels(4), 2, 3, QImage::Format_RGB32, 4, kPng));
    ASSERT_TRUE(ImageTool::ConvertToPNGImageBuffer(longer, RawPixels(4) + "more", 2, 3, QImage::Format_RGB32,
                                                   4, kPng));
    EXPECT_EQ(exact, longer);
}

TEST(ImageBuffer, ReplacesWhatWasThereEvenTheInput)
{
    QByteArray expected;
    ASSERT_TRUE(
        ImageTool::ConvertToPNGImageBuffer(expected, RawPixels(4), 2, 3, QImage::Format_RGB32, 4, kPng));
    QByteArray both = RawPixels(4);
    ASSERT_TRUE(ImageTool::ConvertToPNGImageBuffer(both, both, 2, 3, QImage::Format_RGB32, 4, kPng));
    EXPECT_EQ(both, expected);
}

TEST(ImageBuffer, ReadsForeignMemoryAtAnyAddress)
{
    QByteArray expected;
    ASSERT_TRUE(
        ImageTool::ConvertToPNGImageBuffer(expected, RawPixels(4), 2, 3, QImage::Format_RGB32, 4, kPng));
    const QByteArray shifted = "x" + RawPixels(4);
    const QByteArray raw = QByteArray::fromRawData(shifted.constData() + 1, shifted.size() - 1);
    QByteArray png;
    ASSERT_TRUE(ImageTool::ConvertToPNGImageBuffer(png, raw, 2, 3, QImage::Format_RGB32, 4, kPng));
    EXPECT_EQ(png, expected);
}

TEST(ImageBuffer, RefusesTooFewBytes)
{
    const QByteArray raw = RawPixels(4);
    EXPECT_TRUE(Encodes(raw, 2, 3, QImage::Format_RGB32, 4));
    EXPECT_FALSE(Encodes(raw.left(23), 2, 3, QImage::Format_RGB32, 4));
    EXPECT_FALSE(Encodes(QByteArray(), 2, 3, QImage::Format_RGB32, 4));
    EXPECT_FALSE(Encodes(raw, 2, 4, QImage::Format_RGB32, 4));
}

TEST(ImageBuffer, RefusesSizesThatAreNotPositiveOrTooLarge)
{
    const QByteArray raw = RawPixels(4);
    for (const int size : {0, -1, INT_MIN, INT_MAX, 1 << 30}) {
        EXPECT_FALSE(Encodes(raw, size, 1, QImage::Format_RGB32, 4)) << size;
        EXPECT_FALSE(Encodes(raw, 1, size, QImage::Format_RGB32, 4)) << size;
        EXPECT_FALSE(Encodes(raw, size, size, QImage::Format_RGB32, 4)) << size;
        EXPECT_FALSE(Encodes(raw, 1, 1, QImage::Format_RGB32, size)) << size;
    }
}

TEST(ImageBuffer, RefusesAPixelSizeThatIsNotTheFormats)
{
    const QByteArray raw(1000, 'x');
    EXPECT_FALSE(Encodes(raw, 2, 3, QImage::Format_RGB32, 3));
    EXPECT_FALSE(Encodes(raw, 2, 3, QImage::Format_RGB888, 4));
    EXPECT_FALSE(Encodes(raw, 2, 3, QImage::Format_Grayscale8, 4));
}

TEST(ImageBuffer, RefusesFormatsWithoutWholeBytesOrWithAColourTable)
{
    const QByteArray raw(1000, 'x');
    for (const int format :
         {-1, int(QImage::Format_Invalid), int(QImage::Format_Mono), int(QImage::Format_MonoLSB),
          int(QImage::Format_Indexed8), int(QImage::NImageFormats), 1000})
        for (const int bytesPerPixel : {0, 1})
            EXPECT_FALSE(Encodes(raw, 2, 3, static_cast<QImage::Format>(format), bytesPerPixel)) << format;
}

TEST(ImageBuffer, RefusesFileFormatsThatCannotBeWritten)
{
    for (const char* name : {"", "nothing", "PNG ", "\xF0\x9F\xA7\x8A"})
        EXPECT_FALSE(Encodes(RawPixels(4), 2, 3, QImage::Format_RGB32, 4, QString::fromUtf8(name))) << name;
}
