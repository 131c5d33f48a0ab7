#include "core/utility/ImageTool.h"

#include <climits>
#include <stdexcept>
#include <vector>

#include <QBuffer>
#include <QFile>
#include <QImageReader>

#include <gtest/gtest.h>

#include "tests/common/Directory.h"
#include "tests/common/DirtyMemory.h"
#include "tests/common/PictureFiles.h"

namespace {

std::optional<QSize> Whole(const QSize& size)
{
    return size;
}

std::optional<QSize> Refused(const QSize&)
{
    return std::nullopt;
}

struct Picture {
    bool isRead = false;
    QImage image;
    std::vector<QSize> sizes; ///< that were asked about
};

Picture Read(QIODevice& device, const ImageTool::SizeChoice& choose = Whole)
{
    Picture picture;
    picture.image = test::PlainPicture(3, 3, qRgb(1, 1, 1)); // something is there before
    picture.isRead = ImageTool::ReadPicture(device, picture.image, [&](const QSize& size) {
        picture.sizes.push_back(size);
        return choose(size);
    });
    return picture;
}

Picture Read(const QByteArray& file, const ImageTool::SizeChoice& choose = Whole)
{
    QBuffer buffer;
    buffer.setData(file);
    return Read(buffer, choose);
}

void ExpectNone(const Picture& picture)
{
    EXPECT_FALSE(picture.isRead);
    EXPECT_TRUE(picture.image.isNull());
}

class CountingBuffer : public QBuffer {
public:
    qint64 BytesRead() const { return m_bytesRead; }

protected:
    qint64 readData(char* data, qint64 size) override
    {
        const qint64 count = QBuffer::readData(data, size);
        m_bytesRead += count;
        return count;
    }

private:
    qint64 m_bytesRead = 0;
};

class SequentialBuffer : public QBuffer {
public:
    bool isSequential() const override { return true; }
};

using Sizes = std::vector<QSize>;

constexpr int kBitmapAt = 22; // behind the icon's header and one entry

// With a mask that hides nothing. Its rows count as rows of the bitmap.
QByteArray IconOfBitmap(const QImage& image)
{
    constexpr int kFileHeaderSize = 14;
    const int maskRowBytes = (image.width() + 31) / 32 * 4;
    QByteArray icon = test::IconOf(
        {test::Encoded(image, "BMP").mid(kFileHeaderSize) + QByteArray(image.height() * maskRowBytes, '\0')});
    icon[6] = static_cast<char>(image.width());
    icon[7] = static_cast<char>(image.height());
    icon[kBitmapAt + 8] = static_cast<char>(2 * image.height());
    return icon;
}

} // namespace

TEST(ReadPicture, GivesThePixelsOfTheFile)
{
    const QImage image = test::RandomPicture(13, 7);
    for (const char* format : {"PNG", "BMP", "PPM"}) {
        const Picture picture = Read(test::Encoded(image, format));
        EXPECT_TRUE(picture.isRead);
        EXPECT_EQ(picture.image, image) << format;
        EXPECT_EQ(picture.sizes, Sizes({QSize(13, 7)}));
    }
}

TEST(ReadPicture, TellsAFileByItsSuffixToo)
{
    const bool isSupported = QImageReader::supportedImageFormats().contains("tga");
    const QImage image = test::RandomPicture(5, 3);
    const test::Directory directory;
    QFile file(directory.Write(test::TGA(image, test::Footer::OfVersion2), QStringLiteral("picture.tga")));
    const Picture picture = Read(file);
    EXPECT_EQ(picture.isRead, isSupported);
    EXPECT_EQ(picture.image.convertToFormat(QImage::Format_RGB32), isSupported ? image : QImage());
}

TEST(ReadPicture, TakesADeviceThatIsOpen)
{
    QBuffer buffer;
    buffer.setData(test::Encoded(test::RandomPicture(4, 4), "PNG"));
    ASSERT_TRUE(buffer.open(QIODevice::ReadOnly));
    EXPECT_EQ(Read(buffer).image, test::RandomPicture(4, 4));
}

TEST(ReadPicture, RefusesADeviceThatCannotGoBackOrCannotBeOpened)
{
    SequentialBuffer sequential;
    sequential.setData(test::Encoded(test::RandomPicture(4, 4), "PNG"));
    ExpectNone(Read(sequential));
    const test::Directory directory;
    QFile missing(directory.Path(QStringLiteral("missing.png")));
    ExpectNone(Read(missing));
}

TEST(ReadPicture, WhatIsNoPictureIsNone)
{
    for (const QByteArray& bytes : {QByteArray(), QByteArray("text"), test::PNGThatClaims(20, 20)})
        ExpectNone(Read(bytes));
}

TEST(ReadPicture, OfARefusedFileOnlyTheHeaderIsRead)
{
    const QImage image = test::RandomPicture(300, 300);
    const QByteArray bmp = test::Encoded(image, "BMP");
    for (const QByteArray& file : {test::Encoded(image, "PNG"), bmp, test::WithRowsFromTheTop(bmp),
                                   test::IconOf({test::Encoded(image, "PNG")})}) {
        CountingBuffer accepted, refused;
        accepted.setData(file);
        refused.setData(file);
        EXPECT_TRUE(Read(accepted).isRead);
        EXPECT_GE(accepted.BytesRead(), 250'000);
        ExpectNone(Read(refused, Refused));
        EXPECT_LT(refused.BytesRead(), 100'000);
    }
}

TEST(ReadPicture, IsDecodedToTheSizeChosen)
{
    const QImage image = test::PlainPicture(64, 32, qRgb(200, 100, 50));
    for (const char* format : {"PNG", "BMP", "JPG"}) {
        const Picture picture = Read(test::Encoded(image, format), [](const QSize&) { return QSize(8, 4); });
        EXPECT_EQ(picture.image.size(), QSize(8, 4)) << format;
        EXPECT_NEAR(qRed(picture.image.pixel(4, 2)), 200, 2) << format;
        EXPECT_EQ(picture.sizes, Sizes({QSize(64, 32)})) << format;
    }
}

TEST(ReadPicture, RowsFromTheTopDoNotShowInTheSize)
{
    const QImage image = test::RandomPicture(6, 5);
    const Picture picture = Read(test::WithRowsFromTheTop(test::Encoded(image, "BMP")));
    EXPECT_EQ(picture.sizes, Sizes({QSize(6, 5)}));
    EXPECT_EQ(picture.image, image.mirrored());
}

TEST(ReadPicture, AnIconHasTheSizeOfThePngFileThatIsTaken)
{
    const QImage first = test::RandomPicture(40, 30), second = test::RandomPicture(300, 200);
    const Picture picture = Read(test::IconOf({test::Encoded(first, "PNG"), test::Encoded(second, "PNG")}));
    EXPECT_EQ(picture.sizes, Sizes({QSize(40, 30)}));
    EXPECT_EQ(picture.image, first);
}

TEST(ReadPicture, ACursorIsAnIcon)
{
    const QByteArray icon = test::IconOf({test::Encoded(test::RandomPicture(40, 30), "PNG")});
    const test::Directory directory;
    for (const char* name : {"picture", "picture.cur", "picture.ico", "picture.png"}) {
        QFile file(directory.Write(QByteArray(icon).replace(2, 1, "\2"), QLatin1String(name)));
        const Picture picture = Read(file);
        EXPECT_EQ(picture.sizes, Sizes({QSize(40, 30)})) << name;
        EXPECT_EQ(picture.image, test::RandomPicture(40, 30)) << name;
    }
}

TEST(ReadPicture, AnIconIsJudgedByItsPngFileEvenBeyondAnInt)
{
    EXPECT_EQ(Read(test::IconOf({test::PNGThatClaims(60000, 4'000'000'000)}), Refused).sizes,
              Sizes({QSize(60000, INT_MAX)}));
}

TEST(ReadPicture, ADeviceThatMayBeWrittenToIsRefusedAndLeftAsItIs)
{
    QByteArray icon = IconOfBitmap(test::FourColors());
    EXPECT_TRUE(Read(icon).isRead);
    icon[21] = 4; // the highest byte of where the bitmap is: 64 MiB on
    ExpectNone(Read(icon));
    QBuffer buffer;
    buffer.setData(icon);
    ASSERT_TRUE(buffer.open(QIODevice::ReadWrite));
    ExpectNone(Read(buffer));
    EXPECT_EQ(buffer.data(), icon);
}

TEST(ReadPicture, AnIconCutShortIsNone)
{
    const QByteArray icon = test::IconOf({test::Encoded(test::RandomPicture(5, 5), "PNG")});
    for (int size = 0; size < icon.size() - 16; ++size)
        ExpectNone(Read(icon.left(size)));
}

TEST(ReadPicture, ABitmapInAnIconIsRefusedWhenItsPaletteIsPastCounting)
{
    const test::DirtyMemory dirty;
    const QImage image = test::FourColors();
    for (const QImage::Format format : {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_RGB32}) {
        QByteArray icon = IconOfBitmap(image.convertToFormat(format));
        EXPECT_EQ(Read(icon).image.size(), image.size());
        icon[kBitmapAt + 35] = '\x80'; // the highest byte of the number of colours
        // With 24 bits there is no palette.
        EXPECT_EQ(Read(icon).isRead, format == QImage::Format_RGB32) << format;
    }
}

TEST(ReadPicture, OfAnotherSizeThanAnnouncedIsJudgedAgain)
{
    // Of an icon without a PNG file a side of 0 means 256, but Qt takes what its bitmap says.
    QByteArray icon = IconOfBitmap(test::PlainPicture(9, 8, 0));
    icon.replace(6, 2, QByteArray(2, '\0'));
    const Picture picture = Read(icon);
    EXPECT_EQ(picture.sizes, Sizes({QSize(256, 256), QSize(9, 8)}));
    EXPECT_EQ(picture.image.size(), QSize(9, 8));
    ExpectNone(Read(icon, [](const QSize& size) {
        return size.width() == 256 ? std::make_optional(size) : std::nullopt;
    }));
}

TEST(ReadPicture, WhatABitmapLacksIsBlack)
{
    const QImage image = test::PlainPicture(30, 30, 0xffffffff);
    const test::DirtyMemory dirty;
    for (const QByteArray& file : {test::CutShort(test::Encoded(image, "BMP")),
                                   test::WithRowsFromTheTop(test::CutShort(test::Encoded(image, "BMP")))}) {
        const QImage picture = Read(file).image;
        ASSERT_EQ(picture.size(), image.size());
        int blackCount = 0;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 30; ++x) {
                const QRgb pixel = picture.pixel(x, y);
                blackCount += pixel == 0xff000000 ? 1 : 0;
                ASSERT_TRUE(pixel == 0xff000000 || pixel == 0xffffffff) << x << ' ' << y;
            }
        EXPECT_NEAR(blackCount, 30 * 30 / 4, 30);
    }
}

TEST(ReadPicture, WhatAPhotographLacksIsNoMemoryOfOthers)
{
    const QByteArray file = test::CutShort(test::Encoded(test::RandomPicture(30, 30), "JPG"));
    const QImage picture = Read(file).image;
    ASSERT_EQ(picture.size(), QSize(30, 30));
    const test::DirtyMemory dirty;
    EXPECT_EQ(Read(file).image, picture);
}

TEST(ReadPicture, WhatTheChoiceThrowsPassesThrough)
{
    QBuffer buffer;
    buffer.setData(test::Encoded(test::RandomPicture(4, 4), "PNG"));
    QImage image = test::RandomPicture(3, 3);
    const auto choose = [](const QSize&) -> std::optional<QSize> { throw std::runtime_error("no"); };
    EXPECT_THROW((void)ImageTool::ReadPicture(buffer, image, choose), std::runtime_error);
    EXPECT_TRUE(image.isNull());
}
