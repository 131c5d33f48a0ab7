#include <sys/resource.h>

#include <QImageReader>

#include "tests/texture/TextureSupport.h"

namespace {

using test::Text;

QImage PictureOfText(const QString& text)
{
    TextureFile texture = test::TextureOf(test::RandomImage(9, 9));
    const bool isLoaded = texture.LoadFromJsonObject({{Text("image_data"), text}});
    EXPECT_EQ(isLoaded, !texture.GetImage().isNull());
    EXPECT_TRUE(!isLoaded || texture.GetImage().format() == QImage::Format_RGB32);
    return texture.GetImage();
}

QImage PictureOf(const QByteArray& file)
{
    return PictureOfText(QString::fromLatin1(file.toBase64()));
}

/// The bytes with a little-endian number put over some of them.
QByteArray WithNumber(const QByteArray& bytes, int at, qint32 value)
{
    QByteArray number;
    for (int shift = 0; shift < 32; shift += 8)
        number += static_cast<char>(value >> shift & 0xff);
    return QByteArray(bytes).replace(at, number.size(), number);
}

/// A bitmap file whose header says another size.
QByteArray BitmapThatClaims(int width, int height)
{
    constexpr int kWidthAt = 18, kHeightAt = 22;
    const QByteArray bytes = test::FileOf(test::RandomImage(2, 2), "BMP");
    return WithNumber(WithNumber(bytes, kWidthAt, width), kHeightAt, height);
}

/// An icon of 16 x 16 pixels, as its directory says, that is a PNG file.
QByteArray IconWith(const QByteArray& png)
{
    QByteArray icon = QByteArray("\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0", 14) + QByteArray(8, '\0');
    icon = WithNumber(WithNumber(icon, 14, png.size()), 18, icon.size());
    return icon + png;
}

/// The first bytes of a PNG file, with a size and nothing behind it.
QByteArray PngHeader(unsigned width, unsigned height)
{
    QByteArray bytes("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16);
    for (const unsigned number : {width, height})
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(number >> shift & 0xff);
    return bytes;
}

long PeakKilobytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

TEST(TexturePicture, MayBeOfAnyFormatWithoutLoss)
{
    const QImage image = test::RandomImage(13, 7);
    for (const char* format : {"PNG", "BMP", "PPM", "TIFF"})
        if (QImageReader::supportedImageFormats().contains(QByteArray(format).toLower())) {
            EXPECT_EQ(PictureOf(test::FileOf(image, format)), image) << format;
        }
}

TEST(TexturePicture, MayBeAPhotograph)
{
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(qRgb(200, 100, 50));
    const QByteArray file = test::FileOf(image, "JPG");
    EXPECT_EQ(PictureOf(file), QImage::fromData(file).convertToFormat(QImage::Format_RGB32));
}

TEST(TexturePicture, MayBeAnIconWithAPngFileInside)
{
    const QImage image = test::RandomImage(40, 30);
    EXPECT_EQ(PictureOf(IconWith(test::FileOf(image, "PNG"))), image);
}

TEST(TexturePicture, MayHaveItsRowsFromTheTop)
{
    const QImage image = test::RandomImage(2, 2);
    const QByteArray file = WithNumber(test::FileOf(image, "BMP"), 22, -2);
    EXPECT_EQ(PictureOf(file), image.mirrored());
}

TEST(TexturePicture, OfAnyPixelKindBecomesOpaqueColor)
{
    for (const QImage::Format format :
         {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale8, QImage::Format_Grayscale16,
          QImage::Format_RGB888, QImage::Format_RGBA64, QImage::Format_ARGB32}) {
        const QImage image = test::RandomImage(11, 5).convertToFormat(format);
        EXPECT_EQ(PictureOf(test::FileOf(image, "PNG")),
                  QImage::fromData(test::FileOf(image, "PNG")).convertToFormat(QImage::Format_RGB32))
            << format;
    }
}

TEST(TexturePicture, TransparentPartsLieOnWhite)
{
    QImage image(3, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(255, 0, 0, 255));
    image.setPixel(1, 0, qRgba(255, 0, 0, 0));
    image.setPixel(2, 0, qRgba(0, 0, 0, 51));
    const QImage picture = PictureOf(test::FileOf(image, "PNG"));
    ASSERT_EQ(picture.size(), QSize(3, 1));
    EXPECT_EQ(picture.pixel(0, 0), qRgb(255, 0, 0));
    EXPECT_EQ(picture.pixel(1, 0), qRgb(255, 255, 255));
    EXPECT_EQ(picture.pixel(2, 0), qRgb(204, 204, 204));
}

TEST(TexturePicture, TextMayHoldCharactersThatAreNotBase64)
{
    const QImage image = test::RandomImage(13, 7);
    QString text = QString::fromLatin1(test::FileOf(image, "PNG").toBase64());
    for (int at = text.size(); at > 0; at -= 10)
        text.insert(at, Text("\n\xE6\x9C\xA8-\xC3\xA4"));
    EXPECT_EQ(PictureOfText(text), image);
}

TEST(TexturePicture, TextNeedsNoPadding)
{
    for (int width = 1; width < 8; ++width) {
        const QImage image = test::RandomImage(width, 3);
        QString text = QString::fromLatin1(test::FileOf(image, "PNG").toBase64());
        EXPECT_EQ(PictureOfText(text.remove(QLatin1Char('='))), image);
    }
}

TEST(TexturePicture, TextThatHoldsNoneLeavesNone)
{
    for (const char* text : {"", " ", "=", "====", "A", "AAAA", "no picture at all", "\xE6\x9C\xA8"})
        EXPECT_TRUE(PictureOfText(Text(text)).isNull()) << text;
    EXPECT_TRUE(PictureOf("GIF89a").isNull());
}

TEST(TexturePicture, OfAnotherTypeLeavesNone)
{
    for (const QJsonValue& value :
         {QJsonValue(), QJsonValue(true), QJsonValue(5), QJsonValue(QJsonObject())}) {
        TextureFile texture = test::TextureOf(test::RandomImage(9, 9));
        EXPECT_FALSE(texture.LoadFromJsonObject({{Text("image_data"), value}}));
        EXPECT_TRUE(texture.GetImage().isNull());
        EXPECT_EQ(texture.getTextureName(), Text("untitiled"));
    }
}

TEST(TexturePicture, TruncatedPngIsNone)
{
    const QByteArray file = test::FileOf(test::RandomImage(13, 7), "PNG");
    for (int size = 0; size < file.size() - 12; ++size)
        EXPECT_TRUE(PictureOf(file.left(size)).isNull()) << size;
}

TEST(TexturePicture, RowsThatABitmapLacksAreNoMemoryOfOthers)
{
    for (const QImage::Format format : {QImage::Format_RGB32, QImage::Format_Indexed8, QImage::Format_Mono}) {
        QImage image(64, 64, QImage::Format_RGB32);
        image.fill(Qt::white);
        image = image.convertToFormat(format);
        const QByteArray file = test::FileOf(image, "BMP");
        const QImage picture = PictureOf(file.left(file.size() * 3 / 4));
        ASSERT_EQ(picture.size(), image.size());
        EXPECT_EQ(picture.pixel(0, 63), 0xffffffff) << "the bottom row comes first";
        EXPECT_EQ(picture, PictureOf(file.left(file.size() * 3 / 4)));
        if (format == QImage::Format_RGB32) {
            EXPECT_EQ(picture.pixel(63, 0), 0xff000000);
        }
    }
}

TEST(TexturePicture, OtherFieldsAreReadWithoutIt)
{
    TextureFile texture;
    EXPECT_FALSE(
        texture.LoadFromJsonBuffer("{\"header\": {\"texture_id\": \"7\", \"texture_name\": \"oak\"},"
                                   "\"settings\": {\"texture_repeat_x\": 4}, \"image_data\": \"?\"}"));
    EXPECT_EQ(texture.GetPatternID(), Text("7"));
    EXPECT_EQ(texture.getTextureName(), Text("oak"));
    EXPECT_EQ(texture.GetParameters().matrix.repeat.x, 4.0);
    EXPECT_EQ(texture.GetParameters().matrix.matrix.get(0, 0), 4.0);
}

TEST(TexturePicture, ThatAsksForGigabytesIsNotDecoded)
{
    const long before = PeakKilobytes();
    const struct {
        int width, height;
    } claims[] = {{32769, 1},     {1, 32769},     {32768, 8193},
                  {32768, -8193}, {30000, 30000}, {2147483647, 2147483647}};
    for (const auto& claim : claims)
        EXPECT_TRUE(PictureOf(BitmapThatClaims(claim.width, claim.height)).isNull()) << claim.width;
    EXPECT_LT(PeakKilobytes() - before, 64 * 1024);
}

TEST(TexturePicture, InsideAnIconThatAsksForGigabytesIsNotDecoded)
{
    const long before = PeakKilobytes();
    EXPECT_TRUE(PictureOf(IconWith(PngHeader(60000, 60000) + QByteArray(100, '\0'))).isNull());
    const QByteArray small = test::FileOf(test::RandomImage(4, 4), "PNG");
    EXPECT_TRUE(PictureOf(IconWith(small + PngHeader(60000, 60000))).isNull()) << "whichever is taken";
    EXPECT_FALSE(PictureOf(IconWith(small + PngHeader(60000, 60000).left(20))).isNull());
    EXPECT_LT(PeakKilobytes() - before, 64 * 1024);
}

TEST(TexturePicture, OfTheLargestSideIsTaken)
{
    QImage strip(32768, 1, QImage::Format_RGB32);
    strip.fill(qRgb(1, 2, 3));
    EXPECT_EQ(PictureOf(test::FileOf(strip, "PNG")), strip);
    QImage tooLong(32769, 1, QImage::Format_RGB32);
    tooLong.fill(qRgb(1, 2, 3));
    EXPECT_TRUE(PictureOf(test::FileOf(tooLong, "PNG")).isNull());
    MeshTextureInfo info;
    EXPECT_FALSE(test::TextureOf(strip).getTextureInfo(info, 0) && info.load(tooLong, false, false, false, 0))
        << "a mesh takes what a texture file takes";
}
