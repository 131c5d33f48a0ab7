#include "apps/krmodel/PathDrawing.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace krmodel {

namespace {

constexpr QSize kSize(100, 100);
constexpr double kInfinity = std::numeric_limits<double>::infinity();

DXFPathFile::Contour Square(double half, double middle = 0)
{
    const double low = middle - half, high = middle + half;
    return {{low, low}, {high, low}, {high, high}, {low, high}, {low, low}};
}

QImage Drawn(const std::vector<DXFPathFile::Contour>& contours)
{
    return DrawPaths({{1, contours}}, kSize);
}

/// The picture without anything in it: no point is finite.
QImage Background()
{
    return Drawn({{{kInfinity, 0}}});
}

/// The least box around all pixels that differ from the background.
QRect Marked(const QImage& image)
{
    const QImage background = Background();
    QRect box;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixel(x, y) != background.pixel(x, y))
                box |= QRect(x, y, 1, 1);
    return box;
}

/// A line may share its light with the pixel beside it; what is filled is brighter than that.
bool IsLine(const QImage& image, int x, int y)
{
    return qGray(image.pixel(x, y)) < qGray(Background().pixel(x, y)) - 64;
}

bool IsBackground(const QImage& image, int x, int y)
{
    return image.pixel(x, y) == Background().pixel(x, y);
}

bool IsFilled(const QImage& image, int x, int y)
{
    return !IsLine(image, x, y) && !IsBackground(image, x, y);
}

TEST(PathDrawing, FillsThePictureButForAMargin)
{
    EXPECT_EQ(Marked(Drawn({Square(7)})), QRect(QPoint(5, 5), QPoint(94, 94)));
    EXPECT_EQ(Marked(Drawn({Square(7, 1000)})), QRect(QPoint(5, 5), QPoint(94, 94)));
}

TEST(PathDrawing, KeepsProportionsAndTheMiddle)
{
    const QRect wide = Marked(Drawn({{{0, 0}, {40, 0}, {40, 10}}}));
    EXPECT_EQ(wide.left(), 5);
    EXPECT_EQ(wide.right(), 94);
    EXPECT_EQ(wide.top() + wide.bottom(), 99);
    EXPECT_NEAR(wide.height(), 88 / 4 + 2, 1);
}

TEST(PathDrawing, HasYUpwards)
{
    const QImage image = Drawn({{{0, 0}, {10, 0}}, {{0, 10}, {0.1, 10}}});
    EXPECT_TRUE(IsLine(image, 50, 94) || IsLine(image, 50, 93));
    EXPECT_TRUE(IsBackground(image, 50, 6));
}

TEST(PathDrawing, SmoothsTheEdgesOfLines)
{
    const QImage image = Drawn({{{0, 0}, {10, 9}}});
    int between = 0;
    for (int y = 0; y < 100; ++y)
        between += !IsLine(image, 50, y) && !IsBackground(image, 50, y) ? 1 : 0;
    EXPECT_GE(between, 1);
}

TEST(PathDrawing, FillsClosedContoursAndLeavesTheirHoles)
{
    const QImage image = Drawn({Square(10), Square(5)});
    EXPECT_TRUE(IsBackground(image, 50, 50));
    EXPECT_TRUE(IsFilled(image, 15, 50));
    EXPECT_TRUE(IsBackground(image, 2, 50));
}

TEST(PathDrawing, FillsEachSetForItself)
{
    const QImage image = DrawPaths({{1, {Square(10)}}, {2, {Square(5)}}}, kSize);
    EXPECT_TRUE(IsFilled(image, 50, 50));
}

TEST(PathDrawing, DoesNotFillOpenContours)
{
    DXFPathFile::Contour open = Square(10);
    open.pop_back();
    EXPECT_TRUE(IsBackground(Drawn({open}), 50, 50));
}

TEST(PathDrawing, InterruptsAContourAtAPointThatIsNotFinite)
{
    DXFPathFile::Contour broken = Square(10);
    broken.insert(broken.begin() + 1, {std::nan(""), 0});
    const QImage image = Drawn({broken});
    EXPECT_TRUE(IsBackground(image, 50, 50));
    EXPECT_TRUE(IsBackground(image, 50, 94) && IsBackground(image, 50, 93));
    EXPECT_TRUE(IsLine(image, 50, 6) || IsLine(image, 50, 5));
}

TEST(PathDrawing, DrawsASinglePointInTheMiddle)
{
    const QRect dot = Marked(Drawn({{{5, 1e6}}}));
    EXPECT_TRUE(dot.contains(50, 50) || dot.contains(49, 49));
    EXPECT_LE(dot.width(), 4);
    EXPECT_EQ(Marked(Drawn({{{5, 1e6}, {5, 1e6}}})), dot);
}

TEST(PathDrawing, FitsTheLargestAndTheSmallestNumbers)
{
    constexpr double kLargest = std::numeric_limits<double>::max();
    for (const double half : {kLargest, 1e-300})
        EXPECT_EQ(Marked(Drawn({Square(half)})), Marked(Drawn({Square(1)}))) << half;
}

TEST(PathDrawing, ShowsNothingOfContoursWithoutPoints)
{
    EXPECT_EQ(Drawn({{}, {}}), Background());
    EXPECT_EQ(DrawPaths({}, kSize), Background());
}

TEST(PathDrawing, BackgroundBecomesDarkerDownwards)
{
    const QImage image = Background();
    EXPECT_GT(qGray(image.pixel(50, 0)), qGray(image.pixel(50, 99)) + 20);
    EXPECT_EQ(image.pixel(0, 50), image.pixel(99, 50));
}

} // namespace

} // namespace krmodel
