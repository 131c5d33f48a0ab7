#include <climits>

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QImageReader>

#include "tests/common/DirtyMemory.h"
#include "tests/image/PicturePlugin.h"
#include "tests/image/ReliefSupport.h"

namespace {

using test::Directory;

// Light at the top left, dark at the bottom right, edges that compression keeps.
QImage FourTiles()
{
    QImage image(16, 16, QImage::Format_RGB32);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const int level = (x < 8 ? 255 : 85) - (y < 8 ? 0 : 85);
            image.setPixel(x, y, qRgb(level, level, level));
        }
    return image;
}

struct Checked {
    int code = -1;
    QImage image;
};

Checked Check(const QString& path)
{
    // Something is there before.
    Checked checked{-1, FourTiles()};
    checked.code = ImageFile::CheckImageAndParse(path, checked.image);
    return checked;
}

Checked CheckBytes(const QByteArray& bytes, const QString& name = QStringLiteral("picture"))
{
    const Directory directory;
    return Check(directory.Write(bytes, name));
}

void ExpectCode(int code, const Checked& checked)
{
    EXPECT_EQ(checked.code, code);
    EXPECT_TRUE(checked.image.isNull());
}

// What the file gives is within `tolerance` levels of `expected`, and its relief is that of these pixels.
void ExpectLoads(const QByteArray& file, const QImage& expected, int tolerance = 0,
                 const QString& name = QStringLiteral("picture"))
{
    const Directory directory;
    const QString path = directory.Write(file, name);
    const Checked checked = Check(path);
    ASSERT_EQ(checked.code, 0);
    EXPECT_EQ(checked.image.format(), QImage::Format_RGB32);
    ASSERT_EQ(checked.image.size(), expected.size());
    for (int y = 0; y < expected.height(); ++y)
        for (int x = 0; x < expected.width(); ++x) {
            const QRgb found = checked.image.pixel(x, y), wanted = expected.pixel(x, y);
            ASSERT_NEAR(qRed(found), qRed(wanted), tolerance) << x << ' ' << y;
            ASSERT_NEAR(qGreen(found), qGreen(wanted), tolerance) << x << ' ' << y;
            ASSERT_NEAR(qBlue(found), qBlue(wanted), tolerance) << x << ' ' << y;
        }
    Mesh mesh(0.03f);
    ASSERT_TRUE(test::LoadRelief(path, mesh));
    EXPECT_EQ(test::DifferenceOf(mesh, test::MakeLiteralRelief(checked.image, {})), "");
}

} // namespace

TEST(ImagePicture, PatternsAreThoseOfTheSupportedFormats)
{
    EXPECT_EQ(ImageFile::GetSupportedFileExtension(),
              QStringLiteral("*.jpg *.jpeg *.png *.bmp *.tga *.tiff"));
}

TEST(ImagePicture, SuffixesOfTheSupportedFormatsAreValid)
{
    for (const char* suffix : {"jpg", "jpeg", "png", "bmp", "tga", "tiff"})
        EXPECT_TRUE(ImageFile::IsValidFileExtenson(QLatin1String(suffix))) << suffix;
    for (const char* suffix : {"", "gif", "tif", ".png", "*.png", "png ", "pn", "pngx", "jpg jpeg"})
        EXPECT_FALSE(ImageFile::IsValidFileExtenson(QLatin1String(suffix))) << suffix;
}

TEST(ImagePicture, UpperCaseSuffixIsNotValid)
{
    for (const char* suffix : {"JPG", "JPEG", "PNG", "BMP", "TGA", "TIFF", "Png"})
        EXPECT_FALSE(ImageFile::IsValidFileExtenson(QLatin1String(suffix))) << suffix;
}

TEST(ImagePicture, IsLoadedAs32BitRGB)
{
    const Checked checked = CheckBytes(test::Encoded(FourTiles(), "PNG"));
    EXPECT_EQ(checked.code, 0);
    EXPECT_EQ(checked.image, FourTiles());
    EXPECT_EQ(checked.image.format(), QImage::Format_RGB32);
}

TEST(ImagePicture, FileThatCannotBeReadIsCode1)
{
    const Directory directory;
    ExpectCode(1, Check(directory.Path(QStringLiteral("missing.png"))));
    ExpectCode(1, Check(directory.Path(QString()))); // the directory itself
    ExpectCode(1, Check(QString()));
}

// Qt would look for "missing.png" and others when there is no "missing".
TEST(ImagePicture, NameWithoutItsSuffixIsCode1)
{
    const Directory directory;
    (void)directory.Write(test::Encoded(FourTiles(), "PNG"), QStringLiteral("missing.png"));
    ExpectCode(1, Check(directory.Path(QStringLiteral("missing"))));
}

TEST(ImagePicture, FileThatIsNoPictureIsCode2)
{
    ExpectCode(2, CheckBytes(QByteArray()));
    ExpectCode(2, CheckBytes("v 1 2 3\n", QStringLiteral("picture.png")));
    ExpectCode(2, CheckBytes(test::PNGThatClaims(20, 20)));
    const QByteArray picture = test::Encoded(FourTiles(), "PNG");
    for (int size = 0; size < picture.size() - 16; ++size)
        ExpectCode(2, CheckBytes(picture.left(size)));
}

TEST(ImagePicture, PipeOrDeviceIsCode2)
{
    const Directory directory;
    // Nobody writes to the pipe: opening it would wait for ever.
    const QString pipe = directory.Path(QStringLiteral("pipe.png"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    ExpectCode(2, Check(pipe));
    ExpectCode(2, Check(QStringLiteral("/dev/zero")));
}

TEST(ImagePicture, ThatIsLoadedEmptyIsCode3)
{
    ExpectCode(3, CheckBytes(test::OddPictureFile({QSize(), QSize()})));
    ExpectCode(3, CheckBytes(test::OddPictureFile({QSize(8, 8), QSize()})));
}

// Its rows are 128 MiB of bits and would be 4 GiB of 32-bit pixels, more than Qt counts.
TEST(ImagePicture, ThatIsEmptyWhenConvertedIsCode4)
{
    ExpectCode(4, CheckBytes(test::OddPictureFile({QSize(), {1 << 29, 1}, QImage::Format_Mono})));
}

TEST(ImagePicture, OfTooManyPixelsIsCode2AndNotDecoded)
{
    for (const QSize& size : {QSize(16384, 32769), QSize((1 << 29) + 1, 1), QSize(1 << 30, 1 << 30),
                              QSize(-(1 << 15), -(1 << 15)), QSize(1, INT_MIN)}) {
        const int decodedBefore = test::DecodedOddPictures();
        ExpectCode(2, CheckBytes(test::OddPictureFile({size, {8, 8}})));
        EXPECT_EQ(test::DecodedOddPictures(), decodedBefore);
        const auto width = static_cast<std::uint32_t>(size.width());
        ExpectCode(2, CheckBytes(test::PNGThatClaims(width, static_cast<std::uint32_t>(size.height()))));
    }
}

TEST(ImagePicture, OfASinglePixelIsLoaded)
{
    const Checked checked = CheckBytes(test::Encoded(FourTiles().copy(3, 3, 1, 1), "PNG"));
    EXPECT_EQ(checked.code, 0);
    EXPECT_EQ(checked.image.size(), QSize(1, 1));
}

TEST(ImagePicture, OfEveryFormatIsLoaded)
{
    ExpectLoads(test::Encoded(FourTiles(), "PNG"), FourTiles());
    ExpectLoads(test::Encoded(FourTiles(), "BMP"), FourTiles());
    ExpectLoads(test::Encoded(FourTiles(), "JPG", 100), FourTiles(), 1);
    ExpectLoads(test::Encoded(FourTiles(), "TIFF"), FourTiles());
    ExpectLoads(test::TGA(FourTiles(), test::Footer::OfVersion2), FourTiles(), 0, QStringLiteral("a.tga"));
}

TEST(ImagePicture, OfEveryKindOfPixelIsLoaded)
{
    const QImage::Format formats[] = {
        QImage::Format_Mono,       QImage::Format_MonoLSB,     QImage::Format_Indexed8,
        QImage::Format_RGB16,      QImage::Format_RGB888,      QImage::Format_RGB32,
        QImage::Format_Grayscale8, QImage::Format_Grayscale16, QImage::Format_ARGB32,
        QImage::Format_RGBX64,     QImage::Format_RGBA64,      QImage::Format_ARGB32_Premultiplied};
    std::mt19937 random(25);
    for (const QImage& source : {FourTiles(), test::RandomPicture(random, 13, 7)})
        for (const QImage::Format format : formats) {
            SCOPED_TRACE(format);
            const QImage image = source.convertToFormat(format);
            const QImage expected = image.convertToFormat(QImage::Format_RGB32);
            // 16 bits a channel become 8 by rounding, a way that differs with the file's format.
            const int tolerance = image.depth() == 64 || format == QImage::Format_Grayscale16 ? 1 : 0;
            ExpectLoads(test::Encoded(image, "PNG"), expected, tolerance);
            ExpectLoads(test::Encoded(image, "TIFF"), expected, tolerance);
        }
}

TEST(ImagePicture, OfPaletteOrOneBitIsLoadedFromBMPToo)
{
    for (const QImage::Format format :
         {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_RGB888}) {
        const QImage image = FourTiles().convertToFormat(format);
        ExpectLoads(test::Encoded(image, "BMP"), image.convertToFormat(QImage::Format_RGB32));
    }
}

TEST(ImagePicture, OfTypeBMPWithRowsFromTheTopIsLoaded)
{
    ExpectLoads(test::WithRowsFromTheTop(test::Encoded(FourTiles().mirrored(), "BMP")), FourTiles());
}

TEST(ImagePicture, OfTypeBMPThatIsCutShortIsBlackWhereItLacksPixels)
{
    const QImage image = test::PlainPicture(30, 30, 0xffffffff);
    const test::DirtyMemory dirty;
    const Checked checked = CheckBytes(test::CutShort(test::Encoded(image, "BMP")));
    ASSERT_EQ(checked.code, 0);
    EXPECT_EQ(checked.image.pixel(0, 29), 0xffffffff) << "the bottom row comes first";
    EXPECT_EQ(checked.image.pixel(29, 0), 0xff000000);
}

TEST(ImagePicture, OfTypeIconIsLoadedWithThePngFileInside)
{
    ExpectLoads(test::IconOf({test::Encoded(FourTiles(), "PNG")}), FourTiles());
    const Directory directory;
    const QByteArray onePixel = test::Encoded(FourTiles().copy(3, 3, 1, 1), "PNG");
    Mesh mesh(0.03f);
    EXPECT_FALSE(test::LoadRelief(directory.Write(test::IconOf({onePixel})), mesh));
}

TEST(ImagePicture, OfTypeGreyJPEGIsLoaded)
{
    ExpectLoads(test::Encoded(FourTiles().convertToFormat(QImage::Format_Grayscale8), "JPG", 100),
                FourTiles(), 1);
}

TEST(ImagePicture, OfTypeCMYKJPEGIsLoaded)
{
    QImage expected(32, 8, QImage::Format_RGB32);
    const QRgb colors[] = {qRgb(255, 255, 255), qRgb(0, 0, 0), qRgb(0, 255, 255), qRgb(127, 127, 127)};
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 32; ++x)
            expected.setPixel(x, y, colors[x / 8]);
    ExpectLoads(test::CMYKJPEG({{0, 0, 0, 0}, {0, 0, 0, 255}, {255, 0, 0, 0}, {0, 0, 0, 128}}), expected, 1);
}

TEST(ImagePicture, OfTypeTGAWithoutFooterIsLoadedWhereQtDoes)
{
    const Directory directory;
    const QString path =
        directory.Write(test::TGA(FourTiles(), test::Footer::None), QStringLiteral("picture.tga"));
    const bool isLoaded = !QImage(path).isNull();
    EXPECT_EQ(Check(path).code, isLoaded ? 0 : 2);
}

TEST(ImagePicture, TransparentPixelCountsWithItsColour)
{
    QImage image(2, 2, QImage::Format_ARGB32);
    image.fill(qRgba(200, 200, 200, 0));
    image.setPixel(1, 1, qRgba(10, 20, 30, 128));
    const Checked checked = CheckBytes(test::Encoded(image, "PNG"));
    ASSERT_EQ(checked.code, 0);
    EXPECT_EQ(checked.image.pixel(0, 0), qRgb(200, 200, 200));
    EXPECT_EQ(checked.image.pixel(1, 1), qRgb(10, 20, 30));
}

TEST(ImagePicture, IsToldByItsContentNotByItsSuffix)
{
    for (const char* name : {"picture.jpg", "picture.PNG", "picture.stl", "picture"}) {
        const Checked checked = CheckBytes(test::Encoded(FourTiles(), "PNG"), QLatin1String(name));
        EXPECT_EQ(checked.code, 0) << name;
        EXPECT_EQ(checked.image, FourTiles());
    }
}

TEST(ImagePicture, MayHaveANameBeyondASCII)
{
    const Checked checked = CheckBytes(test::Encoded(FourTiles(), "PNG"), QString::fromUtf8("Höhe 山.png"));
    EXPECT_EQ(checked.code, 0);
}
