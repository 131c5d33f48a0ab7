#include <sys/resource.h>

#include <QImageReader>

#include "tests/common/DirtyMemory.h"
#include "tests/texture/TextureSupport.h"

namespace {

using test::Text;

QImage PictureOfText(const QString& text)
{
    TextureFile texture = test::TextureOf(test::RandomPicture(9, 9));
    const bool isLoaded = texture.LoadFromJsonObject({{Text("image_data"), text}});
    EXPECT_EQ(isLoaded, !texture.GetImage().isNull());
    EXPECT_TRUE(!isLoaded || texture.GetImage().format() == QImage::Format_RGB32);
    return texture.GetImage();
}

QImage PictureOf(const QByteArray& file)
{
    return PictureOfText(QString::fromLatin1(file.toBase64()));
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
    const QImage image = test::RandomPicture(13, 7);
    for (const char* format : {"PNG", "BMP", "PPM", "TIFF"})
        if (QImageReader::supportedImageFormats().contains(QByteArray(format).toLower())) {
            EXPECT_EQ(PictureOf(test::Encoded(image, format)), image) << format;
        }
}

TEST(TexturePicture, MayNotBeATgaFileWhichHasNoMarkOfItsOwn)
{
    const QByteArray file = test::TGA(test::RandomPicture(4, 4), test::Footer::OfVersion2);
    ASSERT_EQ(QImage::fromData(file, "TGA").size(), QSize(4, 4));
    EXPECT_TRUE(PictureOf(file).isNull());
}

TEST(TexturePicture, MayBeAPhotograph)
{
    const QByteArray file = test::Encoded(test::PlainPicture(16, 16, qRgb(200, 100, 50)), "JPG");
    EXPECT_EQ(PictureOf(file), QImage::fromData(file).convertToFormat(QImage::Format_RGB32));
}

TEST(TexturePicture, MayBeAnIconWithAPngFileInside)
{
    const QImage image = test::RandomPicture(40, 30);
    EXPECT_EQ(PictureOf(test::IconOf({test::Encoded(image, "PNG")})), image);
}

TEST(TexturePicture, MayHaveItsRowsFromTheTop)
{
    const QImage image = test::RandomPicture(2, 2);
    EXPECT_EQ(PictureOf(test::WithRowsFromTheTop(test::Encoded(image, "BMP"))), image.mirrored());
}

TEST(TexturePicture, OfAnyPixelKindBecomesOpaqueColor)
{
    for (const QImage::Format format :
         {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale8, QImage::Format_Grayscale16,
          QImage::Format_RGB888, QImage::Format_RGBA64, QImage::Format_ARGB32}) {
        const QImage image = test::RandomPicture(11, 5).convertToFormat(format);
        EXPECT_EQ(PictureOf(test::Encoded(image, "PNG")),
                  QImage::fromData(test::Encoded(image, "PNG")).convertToFormat(QImage::Format_RGB32))
            << format;
    }
}

TEST(TexturePicture, TransparentPartsLieOnWhite)
{
    QImage image(3, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(255, 0, 0, 255));
    image.setPixel(1, 0, qRgba(255, 0, 0, 0));
    image.setPixel(2, 0, qRgba(0, 0, 0, 51));
    const QImage picture = PictureOf(test::Encoded(image, "PNG"));
    ASSERT_EQ(picture.size(), QSize(3, 1));
    EXPECT_EQ(picture.pixel(0, 0), qRgb(255, 0, 0));
    EXPECT_EQ(picture.pixel(1, 0), qRgb(255, 255, 255));
    EXPECT_EQ(picture.pixel(2, 0), qRgb(204, 204, 204));
}

TEST(TexturePicture, TextMayHoldCharactersThatAreNotBase64)
{
    const QImage image = test::RandomPicture(13, 7);
    QString text = QString::fromLatin1(test::Encoded(image, "PNG").toBase64());
    for (int at = text.size(); at > 0; at -= 10)
        text.insert(at, Text("\n\xE6\x9C\xA8-\xC3\xA4"));
    EXPECT_EQ(PictureOfText(text), image);
}

TEST(TexturePicture, TextNeedsNoPadding)
{
    for (int width = 1; width < 8; ++width) {
        const QImage image = test::RandomPicture(width, 3);
        QString text = QString::fromLatin1(test::Encoded(image, "PNG").toBase64());
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
        TextureFile texture = test::TextureOf(test::RandomPicture(9, 9));
        EXPECT_FALSE(texture.LoadFromJsonObject({{Text("image_data"), value}}));
        EXPECT_TRUE(texture.GetImage().isNull());
        EXPECT_EQ(texture.getTextureName(), Text("untitiled"));
    }
}

TEST(TexturePicture, TruncatedPngIsNone)
{
    const QByteArray file = test::Encoded(test::RandomPicture(13, 7), "PNG");
    for (int size = 0; size < file.size() - 12; ++size)
        EXPECT_TRUE(PictureOf(file.left(size)).isNull()) << size;
}

TEST(TexturePicture, RowsThatABitmapLacksAreNoMemoryOfOthers)
{
    for (const QImage::Format format : {QImage::Format_RGB32, QImage::Format_Indexed8, QImage::Format_Mono}) {
        const QImage image = test::PlainPicture(30, 30, 0xffffffff).convertToFormat(format);
        const QByteArray file = test::CutShort(test::Encoded(image, "BMP"));
        const QImage picture = PictureOf(file);
        const test::DirtyMemory dirty;
        ASSERT_EQ(picture.size(), image.size());
        EXPECT_EQ(picture.pixel(0, 29), 0xffffffff) << "the bottom row comes first";
        EXPECT_EQ(picture, PictureOf(file));
        if (format == QImage::Format_RGB32) {
            EXPECT_EQ(picture.pixel(29, 0), 0xff000000);
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
        EXPECT_TRUE(PictureOf(test::BMPThatClaims(claim.width, claim.height)).isNull()) << claim.width;
    EXPECT_LT(PeakKilobytes() - before, 64 * 1024);
}

TEST(TexturePicture, InsideAnIconIsJudgedByItsOwnSize)
{
    const QImage tooLong = test::PlainPicture(32769, 1, qRgb(1, 2, 3));
    EXPECT_TRUE(PictureOf(test::IconOf({test::Encoded(tooLong, "PNG")})).isNull());
}

TEST(TexturePicture, OfTheLargestSideIsTaken)
{
    const QImage strip = test::PlainPicture(32768, 1, qRgb(1, 2, 3));
    EXPECT_EQ(PictureOf(test::Encoded(strip, "PNG")), strip);
    const QImage tooLong = test::PlainPicture(32769, 1, qRgb(1, 2, 3));
    EXPECT_TRUE(PictureOf(test::Encoded(tooLong, "PNG")).isNull());
    MeshTextureInfo info;
    EXPECT_TRUE(test::TextureOf(strip).getTextureInfo(info, 0)) << "a mesh takes what a texture file takes";
    EXPECT_FALSE(info.load(tooLong, false, false, false, 0));
}
