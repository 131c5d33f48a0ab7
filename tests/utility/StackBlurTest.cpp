#include "core/utility/ImageTool.h"

#include <gtest/gtest.h>

#include <QRect>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

QImage RandomImage(std::mt19937& random, int width, int height, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, static_cast<QRgb>(random()));
    return image.convertToFormat(format);
}

int Channel(const QImage& image, int x, int y, int channel)
{
    const uchar* row = image.constScanLine(y);
    return row[x * 4 + channel];
}

void SetChannel(QImage& image, int x, int y, int channel, int value)
{
    image.scanLine(y)[x * 4 + channel] = static_cast<uchar>(value);
}

// One mean as its definition says: every weight, every pixel.
int Mean(const std::vector<int>& line, int at, std::int64_t radius)
{
    const std::int64_t last = static_cast<std::int64_t>(line.size()) - 1;
    std::int64_t sum = 0;
    for (std::int64_t i = -radius; i <= radius; ++i)
        sum += (radius + 1 - std::abs(i)) *
               line[static_cast<std::size_t>(std::clamp<std::int64_t>(at + i, 0, last))];
    const std::int64_t divisor = (radius + 1) * (radius + 1);
    return static_cast<int>((2 * sum + divisor) / (2 * divisor));
}

QImage PlainBlur(const QImage& image, int radius)
{
    QImage result = image;
    for (int channel = 0; channel < 4; ++channel) {
        for (int y = 0; y < image.height(); ++y) {
            std::vector<int> line;
            line.reserve(static_cast<std::size_t>(image.width()));
            for (int x = 0; x < image.width(); ++x)
                line.push_back(Channel(result, x, y, channel));
            for (int x = 0; x < image.width(); ++x)
                SetChannel(result, x, y, channel, Mean(line, x, radius));
        }
        for (int x = 0; x < image.width(); ++x) {
            std::vector<int> line;
            line.reserve(static_cast<std::size_t>(image.height()));
            for (int y = 0; y < image.height(); ++y)
                line.push_back(Channel(result, x, y, channel));
            for (int y = 0; y < image.height(); ++y)
                SetChannel(result, x, y, channel, Mean(line, y, radius));
        }
    }
    return result;
}

::testing::AssertionResult HaveEqualBytes(const QImage& a, const QImage& b)
{
    if (a.size() != b.size() || a.format() != b.format())
        return ::testing::AssertionFailure() << "other size or format";
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            for (int channel = 0; channel < 4; ++channel)
                if (Channel(a, x, y, channel) != Channel(b, x, y, channel))
                    return ::testing::AssertionFailure()
                           << "at " << x << ", " << y << ", byte " << channel << ": "
                           << Channel(a, x, y, channel) << " and " << Channel(b, x, y, channel);
    return ::testing::AssertionSuccess();
}

void ExpectPlainBlur(const QImage& image, int radius)
{
    QImage blurred = image;
    ImageTool::StackBlur(blurred, radius);
    EXPECT_TRUE(HaveEqualBytes(blurred, PlainBlur(image, radius)))
        << image.width() << " x " << image.height() << ", radius " << radius;
}

} // namespace

TEST(StackBlur, SpreadsAPointAsATriangle)
{
    QImage image(7, 1, QImage::Format_RGB32);
    image.fill(Qt::black);
    image.setPixel(3, 0, qRgb(0, 90, 0));
    ImageTool::StackBlur(image, 2);
    const int expected[] = {0, 10, 20, 30, 20, 10, 0};
    for (int x = 0; x < 7; ++x)
        EXPECT_EQ(qGreen(image.pixel(x, 0)), expected[x]) << x;
}

TEST(StackBlur, SpreadsAlongColumnsAsAlongRows)
{
    std::mt19937 random(11);
    for (const int radius : {1, 3, 40}) {
        // One line at a time: in two directions the rounding between them makes a difference.
        const QImage row = RandomImage(random, 29, 1);
        QImage column(1, 29, QImage::Format_RGB32);
        for (int i = 0; i < 29; ++i)
            column.setPixel(0, i, row.pixel(i, 0));
        QImage blurredRow = row;
        ImageTool::StackBlur(blurredRow, radius);
        ImageTool::StackBlur(column, radius);
        for (int i = 0; i < 29; ++i)
            EXPECT_EQ(column.pixel(0, i), blurredRow.pixel(i, 0));
    }
}

TEST(StackBlur, AgreesWithItsDefinitionOnSmallPictures)
{
    std::mt19937 random(12);
    for (int i = 0; i < 3000; ++i) {
        const int width = 1 + static_cast<int>(random() % 12);
        const int height = 1 + static_cast<int>(random() % 12);
        ExpectPlainBlur(RandomImage(random, width, height), 1 + static_cast<int>(random() % 30));
    }
}

TEST(StackBlur, AgreesWithItsDefinitionAcrossStrips)
{
    std::mt19937 random(13);
    for (const int width : {15, 16, 17, 31, 32, 33, 50})
        for (const int height : {1, 15, 16, 17, 40})
            ExpectPlainBlur(RandomImage(random, width, height), 1 + static_cast<int>(random() % 20));
}

TEST(StackBlur, AgreesWithItsDefinitionForLargeRadii)
{
    std::mt19937 random(14);
    for (const int radius : {62, 63, 64, 255, 256, 1000, 2046, 2047, 2894, 2895, 2896, 5000, 100000})
        for (const int side : {1, 2, 5})
            ExpectPlainBlur(RandomImage(random, side, side), radius);
    ExpectPlainBlur(RandomImage(random, 20, 18), 2895);
    ExpectPlainBlur(RandomImage(random, 20, 18), 2896);
}

TEST(StackBlur, DividesExactlyForEveryRadius)
{
    // Black and white make the largest sums, and their border runs through every level.
    QImage edge(2, 1, QImage::Format_RGB32);
    edge.setPixel(0, 0, qRgb(255, 255, 0));
    edge.setPixel(1, 0, qRgb(0, 255, 253));
    for (int radius = 1; radius <= 2950; ++radius)
        ExpectPlainBlur(edge, radius);
}

TEST(StackBlur, KeepsAPlainPicture)
{
    for (const int radius : {1, 7, 2895, 2896, INT_MAX})
        for (const QRgb colour : {qRgb(255, 255, 255), qRgb(0, 0, 0), qRgb(1, 128, 254)}) {
            QImage image(20, 19, QImage::Format_RGB32);
            image.fill(colour);
            const QImage before = image.copy();
            ImageTool::StackBlur(image, radius);
            EXPECT_TRUE(HaveEqualBytes(image, before)) << radius;
        }
}

TEST(StackBlur, StaysBetweenDarkestAndBrightest)
{
    std::mt19937 random(15);
    for (int i = 0; i < 200; ++i) {
        QImage image(1 + static_cast<int>(random() % 40), 1 + static_cast<int>(random() % 40),
                     QImage::Format_RGB32);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, qRgb(100 + static_cast<int>(random() % 20), 0, 255));
        ImageTool::StackBlur(image, 1 + static_cast<int>(random() % 5000));
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                EXPECT_TRUE(qRed(image.pixel(x, y)) >= 100 && qRed(image.pixel(x, y)) < 120);
                EXPECT_EQ(image.pixel(x, y) & 0xff00ffffu, 0xff0000ffu);
            }
    }
}

TEST(StackBlur, EndsForTheLargestRadius)
{
    std::mt19937 random(16);
    QImage image = RandomImage(random, 300, 200);
    QImage limited = image;
    ImageTool::StackBlur(image, INT_MAX);
    ImageTool::StackBlur(limited, 268435455);
    EXPECT_TRUE(HaveEqualBytes(image, limited));
}

TEST(StackBlur, ApproachesTheMeanOfTheBordersForHugeRadii)
{
    // Nearly all of the kernel lies beyond the borders then, half of it on either side.
    QImage image(3, 1, QImage::Format_RGB32);
    image.setPixel(0, 0, qRgb(200, 0, 255));
    image.setPixel(1, 0, qRgb(7, 255, 0));
    image.setPixel(2, 0, qRgb(100, 0, 255));
    ImageTool::StackBlur(image, INT_MAX);
    for (int x = 0; x < 3; ++x)
        EXPECT_EQ(image.pixel(x, 0), qRgb(150, 0, 255));
}

TEST(StackBlur, DoesNothingForARadiusOfZeroOrLess)
{
    std::mt19937 random(17);
    for (const QImage::Format format : {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGB888})
        for (const int radius : {0, -1, INT_MIN}) {
            const QImage before = RandomImage(random, 5, 4, format);
            QImage image = before;
            ImageTool::StackBlur(image, radius);
            EXPECT_EQ(image, before);
            EXPECT_EQ(image.format(), format);
        }
}

TEST(StackBlur, LeavesANullImage)
{
    QImage image;
    ImageTool::StackBlur(image, 5);
    EXPECT_TRUE(image.isNull());
}

TEST(StackBlur, LeavesACopyOfTheImageAlone)
{
    std::mt19937 random(18);
    QImage image = RandomImage(random, 20, 20);
    const QImage shared = image;
    const QImage before = image.copy();
    ImageTool::StackBlur(image, 3);
    EXPECT_TRUE(HaveEqualBytes(shared, before));
    EXPECT_FALSE(HaveEqualBytes(image, before));
}

TEST(StackBlur, KeepsThe32BitFormats)
{
    std::mt19937 random(19);
    for (const QImage::Format format :
         {QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_ARGB32_Premultiplied}) {
        QImage image = RandomImage(random, 9, 9, format);
        ImageTool::StackBlur(image, 2);
        EXPECT_EQ(image.format(), format);
    }
}

TEST(StackBlur, BlursOtherFormatsAs32Bit)
{
    std::mt19937 random(20);
    const QImage source = RandomImage(random, 9, 9, QImage::Format_RGB32);
    for (const QImage::Format format : {QImage::Format_RGB888, QImage::Format_Grayscale8, QImage::Format_Mono,
                                        QImage::Format_RGB16, QImage::Format_Indexed8}) {
        QImage image = source.convertToFormat(format);
        const QImage wide = image.convertToFormat(QImage::Format_RGB32);
        ImageTool::StackBlur(image, 2);
        EXPECT_EQ(image.format(), QImage::Format_RGB32);
        EXPECT_TRUE(HaveEqualBytes(image, PlainBlur(wide, 2))) << format;
    }
    QImage deep = RandomImage(random, 9, 9, QImage::Format_RGBA64);
    ImageTool::StackBlur(deep, 2);
    EXPECT_EQ(deep.format(), QImage::Format_ARGB32_Premultiplied);
}

TEST(StackBlur, WeighsColoursByTheirOpacity)
{
    // The green of a transparent pixel must not show in its red neighbour.
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(255, 0, 0, 255));
    image.setPixel(1, 0, qRgba(0, 255, 0, 0));
    ImageTool::StackBlur(image, 1);
    EXPECT_EQ(image.pixel(0, 0), qRgba(255, 0, 0, 191));
    EXPECT_EQ(image.pixel(1, 0), qRgba(255, 0, 0, 64));
}

TEST(StackBlur, ChangesNothingBetweenRowsThatLieApart)
{
    // An image that looks at a part of another one's pixels, rows and all.
    std::mt19937 random(21);
    QImage whole = RandomImage(random, 40, 30);
    const QImage before = whole.copy();
    const QRect part(5, 3, 20, 25);
    QImage window(whole.scanLine(part.y()) + static_cast<std::ptrdiff_t>(part.x()) * 4, part.width(),
                  part.height(), whole.bytesPerLine(), QImage::Format_RGB32);
    ImageTool::StackBlur(window, 4);
    EXPECT_TRUE(HaveEqualBytes(whole.copy(part), PlainBlur(before.copy(part), 4)));
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            EXPECT_TRUE(part.contains(x, y) || whole.pixel(x, y) == before.pixel(x, y)) << x << ' ' << y;
}
