#include "core/mesh/MeshTextureInfo.h"

#include <cstdint>
#include <cstring>

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/common/DirtyMemory.h"
#include "tests/common/PictureFiles.h"

namespace {

using test::FourColors;

QStringList Statement(const QString& text)
{
    return text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QImage Plain(int width, int height, QRgb color = qRgb(10, 20, 30))
{
    return test::PlainPicture(width, height, color);
}

// One letter a pixel in the order in which they are held.
QString ColorsOf(const MeshTextureInfo& info)
{
    QString colors;
    for (int i = 0; i + 3 < info.pixels.size(); i += 4) {
        QRgb pixel;
        std::memcpy(&pixel, info.pixels.constData() + i, sizeof pixel);
        const QRgb known[] = {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255), qRgb(255, 255, 255)};
        QChar letter = QLatin1Char('?');
        for (int k = 0; k < 4; ++k)
            if (pixel == known[k])
                letter = QLatin1Char("RGBW"[k]);
        colors += letter;
    }
    return colors;
}

void ExpectEmptyPicture(const MeshTextureInfo& info)
{
    EXPECT_EQ(info.width, 0);
    EXPECT_EQ(info.height, 0);
    EXPECT_TRUE(info.pixels.isEmpty());
    EXPECT_FALSE(info.isValidSize());
}

void ExpectSize(const MeshTextureInfo& info, int width, int height)
{
    EXPECT_EQ(info.width, width);
    EXPECT_EQ(info.height, height);
    EXPECT_TRUE(info.isValidSize());
}

class MeshTextureFile : public testing::Test {
protected:
    QString Directory() const { return m_directory.path() + QLatin1Char('/'); }

    void Save(const QString& name, const QImage& image) const { ASSERT_TRUE(image.save(Directory() + name)); }

    void Write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(Directory() + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    bool Load(const QString& statement, int longestSide = 0)
    {
        return m_info.load(Statement(statement), Directory(), longestSide);
    }

    // Loads a file that must be found, and tells its name within the directory.
    QString NameLoadedBy(const QString& statement)
    {
        return Load(statement) ? m_info.fileName.mid(Directory().size()) : QString();
    }

    QTemporaryDir m_directory;
    MeshTextureInfo m_info;
};

} // namespace

TEST(MeshTextureInfo, StartsEmpty)
{
    ExpectEmptyPicture(MeshTextureInfo());
    EXPECT_TRUE(MeshTextureInfo().fileName.isEmpty());
}

TEST(MeshTextureInfo, HoldsTheBottomRowFirst)
{
    MeshTextureInfo info;
    EXPECT_TRUE(info.load(FourColors(), false, false, false, 0));
    ExpectSize(info, 2, 2);
    EXPECT_EQ(ColorsOf(info), QStringLiteral("BWRG"));
}

TEST(MeshTextureInfo, PixelIsBlueGreenRedAndOpaqueInMemory)
{
    MeshTextureInfo info;
    ASSERT_TRUE(info.load(Plain(1, 1, qRgb(1, 2, 3)), false, false, false, 0));
    EXPECT_EQ(info.pixels, QByteArray("\x03\x02\x01\xff", 4));
}

TEST(MeshTextureInfo, MirroredImageGivesTheImageBack)
{
    MeshTextureInfo info;
    ASSERT_TRUE(info.load(FourColors(), false, false, false, 0));
    const auto* bits = reinterpret_cast<const uchar*>(info.pixels.constData());
    EXPECT_EQ(QImage(bits, info.width, info.height, QImage::Format_RGB32).mirrored(), FourColors());
}

TEST(MeshTextureInfo, SwitchesMirrorAndSwapColors)
{
    struct {
        bool horizontally, vertically, swapped;
        const char* colors;
    } const cases[] = {{true, false, false, "WBGR"},
                       {false, true, false, "RGBW"},
                       {false, false, true, "RWBG"},
                       {true, true, false, "GRWB"},
                       {true, true, true, "GBWR"}};
    for (const auto& tested : cases) {
        MeshTextureInfo info;
        EXPECT_TRUE(info.load(FourColors(), tested.horizontally, tested.vertically, tested.swapped, 0));
        EXPECT_EQ(ColorsOf(info), QLatin1String(tested.colors));
    }
}

TEST(MeshTextureInfo, LoadingAnImageKeepsTheFileName)
{
    MeshTextureInfo info;
    info.fileName = QStringLiteral("oak");
    EXPECT_TRUE(info.load(FourColors(), false, false, false, 0));
    EXPECT_EQ(info.fileName, QStringLiteral("oak"));
    EXPECT_FALSE(info.load(QImage(), false, false, false, 0));
    EXPECT_EQ(info.fileName, QStringLiteral("oak"));
}

TEST(MeshTextureInfo, NullImageLeavesNoPicture)
{
    MeshTextureInfo info;
    ASSERT_TRUE(info.load(FourColors(), false, false, false, 0));
    EXPECT_FALSE(info.load(QImage(), true, true, true, 5));
    ExpectEmptyPicture(info);
}

TEST(MeshTextureInfo, TransparentPartsLieOnWhite)
{
    QImage image(1, 2, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(255, 0, 0, 255));
    image.setPixel(0, 1, qRgba(255, 0, 0, 0));
    MeshTextureInfo info;
    ASSERT_TRUE(info.load(image, false, false, false, 0));
    EXPECT_EQ(ColorsOf(info), QStringLiteral("WR"));
}

TEST(MeshTextureInfo, TakesImagesOfEveryFormat)
{
    for (int format = QImage::Format_Mono; format < QImage::NImageFormats; ++format) {
        QImage image(5, 3, QImage::Format(format));
        image.fill(Qt::white);
        MeshTextureInfo info;
        EXPECT_TRUE(info.load(image, false, false, false, 0)) << format;
        ExpectSize(info, 5, 3);
    }
}

TEST(MeshTextureInfo, RowsHaveNoGapsWhateverTheImagesRows)
{
    // Rows of 3 * 3 bytes are padded to 12 in the image.
    QImage image(3, 2, QImage::Format_RGB888);
    image.fill(Qt::red);
    MeshTextureInfo info;
    ASSERT_TRUE(info.load(image, false, false, false, 0));
    EXPECT_EQ(ColorsOf(info), QStringLiteral("RRRRRR"));
}

TEST(MeshTextureInfo, TakesAnImageThatLooksAtItsOwnPixels)
{
    MeshTextureInfo info;
    ASSERT_TRUE(info.load(FourColors(), false, true, false, 0));
    const auto* bits = reinterpret_cast<const uchar*>(info.pixels.constData());
    const QImage image(bits, 2, 2, QImage::Format_RGB32);
    EXPECT_TRUE(info.load(image, false, false, false, 0));
    EXPECT_EQ(ColorsOf(info), QStringLiteral("BWRG"));
}

TEST(MeshTextureInfo, ShrinksTheLongerSideToTheLimit)
{
    MeshTextureInfo info;
    ASSERT_TRUE(info.load(Plain(100, 50), false, false, false, 20));
    ExpectSize(info, 20, 10);
    ASSERT_TRUE(info.load(Plain(30, 90), false, false, false, 30));
    ExpectSize(info, 10, 30);
    EXPECT_EQ(info.pixels.left(4), QByteArray("\x1e\x14\x0a\xff", 4));
}

TEST(MeshTextureInfo, NarrowStripKeepsAPixelOfWidth)
{
    MeshTextureInfo info;
    ASSERT_TRUE(info.load(Plain(1000, 2), false, false, false, 10));
    ExpectSize(info, 10, 1);
}

TEST(MeshTextureInfo, NeverEnlarges)
{
    MeshTextureInfo info;
    for (const int longestSide : {3, 4, 1000, 2147483647}) {
        ASSERT_TRUE(info.load(Plain(3, 2), false, false, false, longestSide));
        ExpectSize(info, 3, 2);
    }
}

TEST(MeshTextureInfo, LimitOfZeroOrLessKeepsAllPixels)
{
    MeshTextureInfo info;
    for (const int longestSide : {0, -1, -2147483647 - 1}) {
        ASSERT_TRUE(info.load(Plain(300, 200), false, false, false, longestSide));
        ExpectSize(info, 300, 200);
    }
}

TEST(MeshTextureInfo, RefusesMorePixelsThanItsLimits)
{
    MeshTextureInfo info;
    QImage widest(32768, 1, QImage::Format_Mono);
    widest.fill(0U);
    EXPECT_TRUE(info.load(widest, false, false, false, 0));
    EXPECT_FALSE(info.load(QImage(32769, 1, QImage::Format_Mono), false, false, false, 0));
    EXPECT_FALSE(info.load(QImage(1, 32769, QImage::Format_Mono), false, false, false, 10));
    EXPECT_FALSE(info.load(QImage(16384, 16385, QImage::Format_Mono), false, false, false, 10));
    ExpectEmptyPicture(info);
}

TEST(MeshTextureInfo, TellsWhichSizesItLoads)
{
    for (const QSize& size : {QSize(1, 1), QSize(32768, 8192), QSize(8192, 32768), QSize(16384, 16384)})
        EXPECT_TRUE(MeshTextureInfo::IsLoadableSize(size)) << size.width();
    for (const QSize& size : {QSize(), QSize(0, 5), QSize(-5, 5), QSize(32769, 1), QSize(1, 32769),
                              QSize(32768, 8193), QSize(16385, 16384)})
        EXPECT_FALSE(MeshTextureInfo::IsLoadableSize(size)) << size.width();
}

TEST(MeshTextureInfo, ClearEmptiesPictureAndName)
{
    MeshTextureInfo info;
    ASSERT_TRUE(info.load(FourColors(), false, false, false, 0));
    info.fileName = QStringLiteral("oak");
    info.clear();
    ExpectEmptyPicture(info);
    EXPECT_TRUE(info.fileName.isEmpty());
}

TEST(MeshTextureInfo, SizeIsValidWhenThePixelsAreAsManyAsItAsksFor)
{
    MeshTextureInfo info;
    info.width = 3;
    info.height = 2;
    for (const int size : {0, 23, 25, 48}) {
        info.pixels = QByteArray(size, '\0');
        EXPECT_FALSE(info.isValidSize()) << size;
    }
    info.pixels = QByteArray(24, '\0');
    EXPECT_TRUE(info.isValidSize());
}

TEST(MeshTextureInfo, SizeBelowOneIsNotValid)
{
    MeshTextureInfo info;
    info.pixels = QByteArray(24, '\0');
    info.width = -3;
    info.height = -2;
    EXPECT_FALSE(info.isValidSize());
    info.pixels.clear();
    info.width = 0;
    info.height = 5;
    EXPECT_FALSE(info.isValidSize());
    info.width = 5;
    info.height = 0;
    EXPECT_FALSE(info.isValidSize());
}

TEST(MeshTextureInfo, SizeIsJudgedBeyondThirtyTwoBits)
{
    MeshTextureInfo info; // 65536 * 65536 * 4 is 0 in 32 bits
    info.width = info.height = 65536;
    EXPECT_FALSE(info.isValidSize());
    info.width = info.height = 2147483647;
    EXPECT_FALSE(info.isValidSize());
}

TEST_F(MeshTextureFile, FindsTheFileThatLoadingTakes)
{
    Save(QStringLiteral("2 oaks.png"), FourColors());
    const auto find = [this](const char* statement) {
        return MeshTextureInfo::FindFile(Statement(QLatin1String(statement)), Directory());
    };
    EXPECT_EQ(find("map_Kd -s 2 2 oaks.png"), Directory() + QStringLiteral("2 oaks.png"));
    EXPECT_EQ(find("map_Kd far/elm.png"), Directory() + QStringLiteral("far/elm.png"))
        << "where it was to be";
    EXPECT_EQ(find("map_Kd"), QString());
}

TEST_F(MeshTextureFile, IsLoadedFromTheDirectory)
{
    Save(QStringLiteral("four.png"), FourColors());
    EXPECT_TRUE(Load(QStringLiteral("map_Kd four.png")));
    ExpectSize(m_info, 2, 2);
    EXPECT_EQ(ColorsOf(m_info), QStringLiteral("BWRG"));
    EXPECT_EQ(m_info.fileName, Directory() + QStringLiteral("four.png"));
}

TEST_F(MeshTextureFile, IsFoundBehindOptions)
{
    Save(QStringLiteral("dark wood.png"), Plain(4, 4));
    EXPECT_EQ(NameLoadedBy(QStringLiteral("map_Kd -s 2 2 1 -clamp on dark wood.png")),
              QStringLiteral("dark wood.png"));
}

TEST_F(MeshTextureFile, WithDigitsInItsNameIsFound)
{
    Save(QStringLiteral("2.png"), Plain(4, 4));
    Save(QStringLiteral("2 oaks.png"), Plain(4, 4));
    EXPECT_EQ(NameLoadedBy(QStringLiteral("map_Kd 2.png")), QStringLiteral("2.png"));
    EXPECT_EQ(NameLoadedBy(QStringLiteral("map_Kd -s 1 1 1 2.png")), QStringLiteral("2.png"));
    EXPECT_EQ(NameLoadedBy(QStringLiteral("map_Kd -s 1 1 1 2 oaks.png")), QStringLiteral("2 oaks.png"));
    EXPECT_EQ(NameLoadedBy(QStringLiteral("map_Kd -s 1 2 oaks.png")), QStringLiteral("2 oaks.png"));
    Save(QStringLiteral("oaks.png"), Plain(4, 4));
    EXPECT_EQ(NameLoadedBy(QStringLiteral("map_Kd -s 1 2 oaks.png")), QStringLiteral("oaks.png"));
}

TEST_F(MeshTextureFile, WithALeadingHyphenIsFound)
{
    Save(QStringLiteral("-old oaks.png"), Plain(4, 4));
    EXPECT_EQ(NameLoadedBy(QStringLiteral("map_Kd -old oaks.png")), QStringLiteral("-old oaks.png"));
}

TEST_F(MeshTextureFile, MayHaveANameBeyondASCII)
{
    const QString name = QString::fromUtf8("hölzern 木.png");
    Save(name, Plain(4, 4));
    EXPECT_EQ(NameLoadedBy(QStringLiteral("map_Kd ") + name), name);
}

TEST_F(MeshTextureFile, IsFoundInASubdirectoryWithEitherSeparator)
{
    ASSERT_TRUE(QDir(Directory()).mkpath(QStringLiteral("textures/dark")));
    Save(QStringLiteral("textures/dark/wood.png"), Plain(4, 4));
    EXPECT_TRUE(Load(QStringLiteral("map_Kd textures/dark/wood.png")));
    EXPECT_TRUE(Load(QStringLiteral("map_Kd textures\\dark\\wood.png")));
    EXPECT_EQ(m_info.fileName, Directory() + QStringLiteral("textures/dark/wood.png"));
}

TEST_F(MeshTextureFile, OfAnotherMachineIsFoundBesideTheLibrary)
{
    Save(QStringLiteral("wood.png"), Plain(4, 4));
    for (const char* name : {"C:\\textures\\wood.png", "/no/such/folder/wood.png", "gone/wood.png",
                             "..\\..\\gone\\wood.png", "\\\\server\\share\\wood.png"}) {
        EXPECT_TRUE(Load(QStringLiteral("map_Kd ") + QLatin1String(name))) << name;
        EXPECT_EQ(m_info.fileName, Directory() + QStringLiteral("wood.png"));
    }
}

TEST_F(MeshTextureFile, WithAnAbsolutePathIsTakenFromThere)
{
    const QTemporaryDir elsewhere;
    const QString path = elsewhere.path() + QStringLiteral("/wood.png");
    ASSERT_TRUE(Plain(7, 7).save(path));
    Save(QStringLiteral("wood.png"), Plain(4, 4));
    EXPECT_TRUE(Load(QStringLiteral("map_Kd ") + path));
    EXPECT_EQ(m_info.fileName, path);
    ExpectSize(m_info, 7, 7);
}

TEST_F(MeshTextureFile, ThatIsMissingLeavesItsNameAlone)
{
    Save(QStringLiteral("wood.png"), Plain(4, 4));
    ASSERT_TRUE(Load(QStringLiteral("map_Kd wood.png")));
    EXPECT_FALSE(Load(QStringLiteral("map_Kd -s 1 2 folder/oak.png")));
    ExpectEmptyPicture(m_info);
    EXPECT_EQ(m_info.fileName, Directory() + QStringLiteral("folder/oak.png"));
}

TEST_F(MeshTextureFile, StatementWithoutFileNameEmptiesTheTexture)
{
    Save(QStringLiteral("wood.png"), Plain(4, 4));
    ASSERT_TRUE(Load(QStringLiteral("map_Kd wood.png")));
    EXPECT_FALSE(Load(QStringLiteral("map_Kd")));
    ExpectEmptyPicture(m_info);
    EXPECT_TRUE(m_info.fileName.isEmpty());
    EXPECT_FALSE(m_info.load(QStringList(), Directory(), 0));
}

TEST_F(MeshTextureFile, LaterStatementReplacesThePicture)
{
    Save(QStringLiteral("small.png"), Plain(4, 4));
    Save(QStringLiteral("large.png"), Plain(9, 8));
    ASSERT_TRUE(Load(QStringLiteral("map_Kd small.png")));
    ASSERT_TRUE(Load(QStringLiteral("map_Kd large.png")));
    ExpectSize(m_info, 9, 8);
}

TEST_F(MeshTextureFile, IsShrunkToTheLongestSide)
{
    for (const char* name : {"wood.png", "wood.jpg", "wood.bmp"}) {
        Save(QLatin1String(name), Plain(160, 80));
        EXPECT_TRUE(Load(QStringLiteral("map_Kd ") + QLatin1String(name), 40)) << name;
        ExpectSize(m_info, 40, 20);
        EXPECT_TRUE(Load(QStringLiteral("map_Kd ") + QLatin1String(name), 0)) << name;
        ExpectSize(m_info, 160, 80);
    }
}

TEST_F(MeshTextureFile, IsReadWhateverItsSuffix)
{
    Save(QStringLiteral("four.png"), FourColors());
    ASSERT_TRUE(
        QFile::copy(Directory() + QStringLiteral("four.png"), Directory() + QStringLiteral("four.jpg")));
    EXPECT_TRUE(Load(QStringLiteral("map_Kd four.jpg")));
    EXPECT_EQ(ColorsOf(m_info), QStringLiteral("BWRG"));
}

TEST_F(MeshTextureFile, OfTypeTGAIsReadWhereQtDoes)
{
    Write(QStringLiteral("four.tga"), test::TGA(FourColors(), test::Footer::OfVersion2));
    const bool isSupported = QImageReader::supportedImageFormats().contains("tga");
    EXPECT_EQ(Load(QStringLiteral("map_Kd four.tga")), isSupported);
    EXPECT_EQ(ColorsOf(m_info), isSupported ? QStringLiteral("BWRG") : QString());
}

TEST_F(MeshTextureFile, ThatIsNoPictureIsRefused)
{
    Write(QStringLiteral("empty.png"), QByteArray());
    Write(QStringLiteral("text.png"), "v 1 2 3\n");
    for (const char* name : {"empty.png", "text.png"}) {
        EXPECT_FALSE(Load(QStringLiteral("map_Kd ") + QLatin1String(name)));
        ExpectEmptyPicture(m_info);
        EXPECT_EQ(m_info.fileName, Directory() + QLatin1String(name));
    }
}

TEST_F(MeshTextureFile, ThatClaimsTooManyPixelsIsRefusedUndecoded)
{
    const struct {
        std::uint32_t width, height;
    } claims[] = {{32769, 1}, {1, 32769}, {32768, 8193}, {100000, 100000}, {0x7fffffff, 0x7fffffff}};
    for (const auto& claim : claims)
        for (const int longestSide : {0, 64}) {
            Write(QStringLiteral("bomb.png"), test::PNGThatClaims(claim.width, claim.height));
            EXPECT_FALSE(Load(QStringLiteral("map_Kd bomb.png"), longestSide));
            ExpectEmptyPicture(m_info);
        }
}

TEST_F(MeshTextureFile, OfTypeBMPMayHaveItsRowsFromTheTop)
{
    Write(QStringLiteral("four.bmp"),
          test::WithRowsFromTheTop(test::Encoded(FourColors().mirrored(), "BMP")));
    EXPECT_TRUE(Load(QStringLiteral("map_Kd four.bmp")));
    EXPECT_EQ(ColorsOf(m_info), QStringLiteral("BWRG"));
    Write(QStringLiteral("large.bmp"), test::WithRowsFromTheTop(test::Encoded(Plain(160, 80), "BMP")));
    EXPECT_TRUE(Load(QStringLiteral("map_Kd large.bmp"), 40));
    ExpectSize(m_info, 40, 20);
}

TEST_F(MeshTextureFile, InAnIconIsJudgedByItsOwnSize)
{
    Write(QStringLiteral("long.ico"), test::IconOf({test::Encoded(Plain(32769, 1), "PNG")}));
    EXPECT_FALSE(Load(QStringLiteral("map_Kd long.ico"), 64));
    ExpectEmptyPicture(m_info);
    Write(QStringLiteral("wood.ico"), test::IconOf({test::Encoded(Plain(60, 30), "PNG")}));
    EXPECT_TRUE(Load(QStringLiteral("map_Kd wood.ico")));
    ExpectSize(m_info, 60, 30);
}

TEST_F(MeshTextureFile, ThatIsCutShortShowsNoMemoryOfOthers)
{
    const QImage white = Plain(30, 30, 0xffffffff);
    Write(QStringLiteral("cut.bmp"), test::CutShort(test::Encoded(white, "BMP")));
    const test::DirtyMemory dirty;
    ASSERT_TRUE(Load(QStringLiteral("map_Kd cut.bmp")));
    EXPECT_EQ(m_info.pixels.left(4), QByteArray(4, '\xff')) << "the bottom row comes first";
    EXPECT_EQ(m_info.pixels.right(4), QByteArray("\0\0\0\xff", 4));
}

TEST_F(MeshTextureFile, ThatIsADirectoryOrAPipeIsRefused)
{
    ASSERT_TRUE(QDir(Directory()).mkdir(QStringLiteral("folder.png")));
    EXPECT_FALSE(Load(QStringLiteral("map_Kd folder.png")));
    // Nobody writes to the pipe: opening it would wait for ever.
    ASSERT_EQ(mkfifo(QFile::encodeName(Directory() + QStringLiteral("pipe.png")).constData(), 0600), 0);
    EXPECT_FALSE(Load(QStringLiteral("map_Kd pipe.png")));
    EXPECT_FALSE(Load(QStringLiteral("map_Kd /dev/zero")));
}
