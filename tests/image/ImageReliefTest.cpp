#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/common/FilledMesh.h"
#include "tests/image/PicturePlugin.h"
#include "tests/image/ReliefSupport.h"

namespace {

using test::Directory;
using test::ExpectFilledMesh;
using test::ExpectIdentityOfFilledMesh;
using test::FilledMesh;
using test::GreyPicture;
using test::LoadRelief;
using test::OddPicture;
using test::ReliefArguments;
using test::ReliefOf;
using Point = Vector3D<float>;
using Points = std::vector<Point>;
using Faces = std::vector<TriangleFace>;

QImage PlainPicture(int width, int height, int level)
{
    return GreyPicture(width, std::vector<int>(static_cast<std::size_t>(width * height), level));
}

const Points& VerticesOf(const Mesh& mesh)
{
    return *mesh.GetVerticesVecPtr();
}

Points TopOf(const Mesh& mesh)
{
    const Points& vertices = VerticesOf(mesh);
    return {vertices.begin(), vertices.begin() + static_cast<std::ptrdiff_t>(vertices.size() / 2)};
}

std::vector<float> HeightsOf(const Mesh& mesh)
{
    std::vector<float> heights;
    for (const Point& vertex : TopOf(mesh))
        heights.push_back(vertex.z);
    return heights;
}

void ExpectRefused(const QString& path, const ReliefArguments& arguments = {})
{
    Mesh mesh = FilledMesh();
    EXPECT_FALSE(LoadRelief(path, mesh, arguments)) << path.toStdString();
    ExpectFilledMesh(mesh);
}

void ExpectRefused(const QByteArray& picture, const ReliefArguments& arguments = {})
{
    const Directory directory;
    ExpectRefused(directory.Write(picture), arguments);
}

ReliefArguments WithPercent(int percent)
{
    ReliefArguments arguments;
    arguments.scalePercent = percent;
    return arguments;
}

ReliefArguments WithBlur(int radius)
{
    ReliefArguments arguments;
    arguments.blurRadius = radius;
    return arguments;
}

ReliefArguments WithHeights(float minHeight, float maxHeight, bool brightIsHigh = true)
{
    ReliefArguments arguments;
    arguments.minHeight = minHeight;
    arguments.maxHeight = maxHeight;
    arguments.brightIsHigh = brightIsHigh;
    return arguments;
}

} // namespace

TEST(ImageRelief, OfFourPixelsHasEightVerticesAndTwelveFaces)
{
    ReliefArguments arguments = WithHeights(1, 6);
    arguments.sizeX = 4;
    arguments.sizeY = 2;
    const Mesh mesh = ReliefOf(GreyPicture(2, {0, 51, 102, 255}), arguments);
    EXPECT_EQ(
        VerticesOf(mesh),
        (Points{{2, 3, 1}, {6, 3, 2}, {2, 1, 3}, {6, 1, 6}, {2, 1, 0}, {6, 1, 0}, {6, 3, 0}, {2, 3, 0}}));
    EXPECT_EQ(*mesh.GetFacesVecPtr(), (Faces{{0, 2, 1},
                                             {2, 3, 1},
                                             {7, 6, 5},
                                             {7, 5, 4},
                                             {3, 2, 4},
                                             {3, 4, 5},
                                             {1, 3, 5},
                                             {1, 5, 6},
                                             {0, 1, 6},
                                             {0, 6, 7},
                                             {0, 7, 4},
                                             {0, 4, 2}}));
    EXPECT_EQ(mesh.GetVertexNum(), 8);
    EXPECT_EQ(mesh.GetFaceNum(), 12);
    EXPECT_NEAR(mesh.GetVolume(), 4 * 2 * (1 + 2 * (2 + 3) + 6) / 6.0, 1e-12);
}

TEST(ImageRelief, TakesNoMoreMemoryThanItsListsAreLong)
{
    const Mesh mesh = ReliefOf(GreyPicture(3, std::vector<int>(3 * 5, 100)));
    EXPECT_EQ(VerticesOf(mesh).capacity(), VerticesOf(mesh).size());
    EXPECT_EQ(mesh.GetFacesVecPtr()->capacity(), mesh.GetFacesVecPtr()->size());
}

TEST(ImageRelief, NumbersTheBottomOnceAroundAndThenItsInside)
{
    ReliefArguments arguments;
    arguments.sizeX = 6;
    arguments.sizeY = 4;
    const Mesh mesh = ReliefOf(PlainPicture(4, 3, 0), arguments);
    const Points& vertices = VerticesOf(mesh);
    EXPECT_EQ(Points(vertices.begin() + 12, vertices.end()), (Points{{3, 2, 0},
                                                                     {5, 2, 0},
                                                                     {7, 2, 0},
                                                                     {9, 2, 0},
                                                                     {9, 4, 0},
                                                                     {9, 6, 0},
                                                                     {7, 6, 0},
                                                                     {5, 6, 0},
                                                                     {3, 6, 0},
                                                                     {3, 4, 0},
                                                                     {5, 4, 0},
                                                                     {7, 4, 0}}));
}

TEST(ImageRelief, SpansFromHalfItsSizeToOneAndAHalf)
{
    const Mesh mesh = ReliefOf(PlainPicture(17, 9, 128));
    const MeshBoundingBox box = mesh.GetBoundingBox();
    EXPECT_EQ(box.minimum, Point(15, 10, 0));
    EXPECT_EQ(box.maximum.x, 45);
    EXPECT_EQ(box.maximum.y, 30);
}

TEST(ImageRelief, IsExactlyAsLargeAsAskedForDespiteRounding)
{
    ReliefArguments arguments;
    arguments.sizeX = 0.7f;
    arguments.sizeY = 1.1f;
    bool wouldMiss = false;
    for (int pixels = 2; pixels <= 60; ++pixels) {
        const Mesh mesh = ReliefOf(PlainPicture(pixels, pixels, 9), arguments);
        const float step = arguments.sizeX / static_cast<float>(pixels - 1);
        wouldMiss = wouldMiss || static_cast<float>(pixels - 1) * step != arguments.sizeX;
        const MeshBoundingBox box = mesh.GetBoundingBox();
        ASSERT_EQ(box.maximum.x, arguments.sizeX + arguments.sizeX / 2) << pixels;
        ASSERT_EQ(box.maximum.y, arguments.sizeY + arguments.sizeY / 2) << pixels;
    }
    EXPECT_TRUE(wouldMiss) << "the last multiple of the step";
}

TEST(ImageRelief, FirstRowOfThePictureLiesFarthestAlongY)
{
    const Mesh mesh = ReliefOf(GreyPicture(2, {255, 255, 0, 0, 0, 0}));
    EXPECT_EQ(TopOf(mesh).front(), Point(15, 30, 4));
    EXPECT_EQ(TopOf(mesh).back(), Point(45, 10, 1));
}

TEST(ImageRelief, HeightsSpreadOverAllLevelsNotOverThoseOfThePicture)
{
    const Mesh mesh = ReliefOf(GreyPicture(2, {51, 102, 153, 204}), WithHeights(0, 5));
    EXPECT_EQ(HeightsOf(mesh), (std::vector<float>{1, 2, 3, 4}));
}

TEST(ImageRelief, OfAWhitePictureWithDarkHighIsFlatAtMinHeight)
{
    const Mesh mesh = ReliefOf(PlainPicture(5, 4, 255), WithHeights(1.5f, 4, false));
    EXPECT_EQ(HeightsOf(mesh), std::vector<float>(20, 1.5f));
}

TEST(ImageRelief, OfAWhitePictureWithBrightHighIsFlatAtMaxHeight)
{
    const Mesh mesh = ReliefOf(PlainPicture(5, 4, 255), WithHeights(1.5f, 4, true));
    EXPECT_EQ(HeightsOf(mesh), std::vector<float>(20, 4.0f));
    EXPECT_NEAR(mesh.GetVolume(), 30 * 20 * 4, 1e-9);
}

TEST(ImageRelief, OfABlackPictureIsTheOtherWayRound)
{
    EXPECT_EQ(HeightsOf(ReliefOf(PlainPicture(2, 2, 0), WithHeights(1.5f, 4, true))),
              std::vector<float>(4, 1.5f));
    EXPECT_EQ(HeightsOf(ReliefOf(PlainPicture(2, 2, 0), WithHeights(1.5f, 4, false))),
              std::vector<float>(4, 4.0f));
}

TEST(ImageRelief, MaxHeightMayBeBelowMinHeight)
{
    const Mesh mesh = ReliefOf(GreyPicture(2, {0, 255, 0, 255}), WithHeights(5, 2));
    EXPECT_EQ(HeightsOf(mesh), (std::vector<float>{5, 2, 5, 2}));
}

TEST(ImageRelief, TakesSizesAndHeightsAsTheyAre)
{
    ReliefArguments arguments = WithHeights(-2, -1);
    arguments.sizeX = -4;
    arguments.sizeY = 0;
    const Mesh mesh = ReliefOf(GreyPicture(2, {0, 255, 0, 255}), arguments);
    EXPECT_EQ(TopOf(mesh), (Points{{-2, 0, -2}, {-6, 0, -1}, {-2, 0, -2}, {-6, 0, -1}}));
    EXPECT_EQ(mesh.GetVolume(), 0);
}

TEST(ImageRelief, ZeroHeightHasNoSign)
{
    for (const float height : HeightsOf(ReliefOf(PlainPicture(2, 2, 0), WithHeights(-0.0f, -5))))
        EXPECT_FALSE(std::signbit(height));
}

TEST(ImageRelief, NumbersThatAreNotFiniteGiveTheVolumeOfWhatIs)
{
    const float bad[] = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                         std::numeric_limits<float>::max()};
    for (const float number : bad)
        for (int argument = 0; argument < 4; ++argument) {
            ReliefArguments arguments;
            float* const places[] = {&arguments.sizeX, &arguments.sizeY, &arguments.minHeight,
                                     &arguments.maxHeight};
            *places[argument] = number;
            const Mesh mesh = ReliefOf(GreyPicture(3, {1, 2, 3, 40, 50, 60, 7, 8, 9}), arguments);
            EXPECT_EQ(mesh.GetFaceNum(), 32);
            EXPECT_EQ(mesh.GetVolume(), mesh.CalcuateVolume()) << number << ' ' << argument;
        }
}

TEST(ImageRelief, GreyIsTheWeightedMeanOfTheColours)
{
    QImage picture(2, 2, QImage::Format_RGB32);
    picture.setPixel(0, 0, qRgb(255, 0, 0));
    picture.setPixel(1, 0, qRgb(0, 255, 0));
    picture.setPixel(0, 1, qRgb(0, 0, 255));
    picture.setPixel(1, 1, qRgb(255, 255, 255));
    EXPECT_EQ(HeightsOf(ReliefOf(picture, WithHeights(0, 255))), (std::vector<float>{87, 127, 39, 255}));
}

TEST(ImageRelief, ReplacesWhatTheMeshHeldAndKeepsItsIdentity)
{
    const Directory directory;
    Mesh mesh = FilledMesh();
    ASSERT_TRUE(LoadRelief(directory.Write(test::Encoded(PlainPicture(3, 2, 0), "PNG")), mesh));
    EXPECT_EQ(mesh.GetVertexNum(), 12);
    EXPECT_EQ(mesh.GetFaceNum(), 20);
    EXPECT_EQ(VerticesOf(mesh).size(), 12U);
    EXPECT_EQ(mesh.GetFacesVecPtr()->size(), 20U);
    EXPECT_TRUE(mesh.GetTexCoordVecPtr()->empty());
    EXPECT_TRUE(mesh.GetTextureFacesVecPtr()->empty());
    EXPECT_NEAR(mesh.GetVolume(), 30 * 20 * 1, 1e-9);
    ExpectIdentityOfFilledMesh(mesh);
}

TEST(ImageRelief, ProvidesNormalsButNoNeighbours)
{
    const Mesh mesh = ReliefOf(PlainPicture(3, 3, 100));
    ASSERT_EQ(mesh.GetFaceNormals().size(), 32U);
    EXPECT_EQ(mesh.GetFaceNormals()[0], Point(0, 0, 1));
    EXPECT_EQ(mesh.GetFaceNormals()[8], Point(0, 0, -1));
    EXPECT_EQ(mesh.GetFaceNormals()[16], Point(0, -1, 0));
    EXPECT_EQ(mesh.GetFaceNormals()[20], Point(1, 0, 0));
    EXPECT_EQ(mesh.GetFaceNormals()[24], Point(0, 1, 0));
    EXPECT_EQ(mesh.GetFaceNormals()[28], Point(-1, 0, 0));
    EXPECT_EQ(mesh.GetVertexNormals().size(), 18U);
    EXPECT_TRUE(mesh.GetFaceNeighbours().empty());
}

TEST(ImageRelief, BlurRadiusOfZeroOrLessKeepsThePicture)
{
    const QImage picture = GreyPicture(3, {0, 255, 0, 255, 0, 255, 9, 9, 9});
    for (const int radius : {0, -1, INT_MIN})
        EXPECT_EQ(HeightsOf(ReliefOf(picture, WithBlur(radius))), HeightsOf(ReliefOf(picture))) << radius;
}

TEST(ImageRelief, BlurFlattensEdges)
{
    const QImage picture = GreyPicture(4, {0, 0, 255, 255, 0, 0, 255, 255});
    ReliefArguments arguments = WithHeights(0, 255);
    arguments.blurRadius = 1;
    EXPECT_EQ(HeightsOf(ReliefOf(picture, arguments)),
              (std::vector<float>{0, 64, 191, 255, 0, 64, 191, 255}));
}

TEST(ImageRelief, BlurRadiusOfAnySizeEnds)
{
    const QImage picture = GreyPicture(2, {0, 255, 255, 0});
    for (const int radius : {2, 100, 2895, 2896, 1 << 20, (1 << 28) - 1, INT_MAX}) {
        const Mesh mesh = ReliefOf(picture, WithBlur(radius));
        EXPECT_EQ(mesh.GetVertexNum(), 8);
        for (const float height : HeightsOf(mesh))
            EXPECT_NEAR(height, 2.5, 0.6) << radius;
    }
}

TEST(ImageRelief, ScalesDownToAPercentageOfItsSize)
{
    EXPECT_EQ(ReliefOf(PlainPicture(10, 6, 0), WithPercent(50)).GetVertexNum(), 2 * 5 * 3);
    EXPECT_EQ(ReliefOf(PlainPicture(10, 6, 0), WithPercent(99)).GetVertexNum(), 2 * 8 * 5)
        << "9 x 5 in the proportions of 10 x 6";
    EXPECT_EQ(ReliefOf(PlainPicture(200, 200, 0), WithPercent(1)).GetVertexNum(), 2 * 2 * 2);
}

TEST(ImageRelief, ScalesSmoothly)
{
    ReliefArguments arguments = WithHeights(0, 255);
    arguments.scalePercent = 50;
    const Mesh mesh =
        ReliefOf(GreyPicture(4, {0, 100, 0, 100, 100, 0, 100, 0, 0, 100, 0, 100, 100, 0, 100, 0}), arguments);
    for (const float height : HeightsOf(mesh))
        EXPECT_NEAR(height, 50, 1);
}

TEST(ImageRelief, ScaledOneIsAsLargeAsTheWholeOne)
{
    const MeshBoundingBox box = ReliefOf(PlainPicture(40, 40, 255), WithPercent(30)).GetBoundingBox();
    EXPECT_EQ(box.minimum, Point(15, 10, 0));
    EXPECT_EQ(box.maximum, Point(45, 30, 4));
}

TEST(ImageRelief, PercentageOfAHundredOrMoreKeepsTheSize)
{
    const QImage picture = GreyPicture(3, {1, 2, 3, 40, 50, 60, 7, 8, 9});
    for (const int percent : {100, 101, 200, INT_MAX}) {
        const Mesh mesh = ReliefOf(picture, WithPercent(percent));
        EXPECT_EQ(VerticesOf(mesh), VerticesOf(ReliefOf(picture))) << percent;
    }
}

TEST(ImageRelief, PictureOfOnePixelWidthOrHeightIsRefused)
{
    for (const QSize& size : {QSize(1, 1), QSize(1, 9), QSize(9, 1)})
        for (const int percent : {100, 50})
            ExpectRefused(test::Encoded(PlainPicture(size.width(), size.height(), 50), "PNG"),
                          WithPercent(percent));
}

TEST(ImageRelief, PictureOfOnePixelWidthOrHeightAfterScalingIsRefused)
{
    const QByteArray picture = test::Encoded(PlainPicture(10, 40, 50), "PNG");
    for (const int percent : {1, 2, 5, 10, 19})
        ExpectRefused(picture, WithPercent(percent));
    const Directory directory;
    Mesh mesh(0.03f);
    EXPECT_TRUE(LoadRelief(directory.Write(picture), mesh, WithPercent(20)));
    EXPECT_EQ(mesh.GetVertexNum(), 2 * 2 * 8);
}

TEST(ImageRelief, PercentageOfZeroOrLessIsRefused)
{
    for (const int percent : {0, -1, -50, -100, -1000, INT_MIN})
        ExpectRefused(test::Encoded(PlainPicture(10, 10, 50), "PNG"), WithPercent(percent));
}

TEST(ImageRelief, FileThatIsNoPictureLeavesTheMeshAsItWas)
{
    const Directory directory;
    ExpectRefused(directory.Path(QStringLiteral("missing.png")));
    ExpectRefused(directory.Path(QString()));
    ExpectRefused(QString());
    ExpectRefused(QStringLiteral("/dev/zero"));
    ExpectRefused(QByteArray());
    ExpectRefused(QByteArray("v 1 2 3\n"));
    const QByteArray picture = test::Encoded(PlainPicture(20, 20, 50), "PNG");
    ExpectRefused(picture.left(picture.size() / 2));
}

TEST(ImageRelief, RefusesByTheHeaderBeforeDecoding)
{
    const struct {
        QSize size;
        int percent;
    } refused[] = {{{1, 100}, 100},          {{100, 1}, 100},     {{0, 5}, 100},
                   {{10, 40}, 10},           {{40, 40}, 0},       {{40, 40}, -1},
                   {{16384, 32769}, 100},    {{16384, 32769}, 1}, {{1 << 30, 1 << 30}, 100},
                   {{INT_MAX, INT_MAX}, 50}, {{INT_MAX, 2}, 99}};
    for (const auto& picture : refused) {
        const int decodedBefore = test::DecodedOddPictures();
        ExpectRefused(test::OddPictureFile({picture.size, {8, 8}}), WithPercent(picture.percent));
        EXPECT_EQ(test::DecodedOddPictures(), decodedBefore)
            << picture.size.width() << " x " << picture.size.height();
    }
}

// As BMP files tell it whose rows run from the top.
TEST(ImageRelief, RefusesByANegativeHeightBeforeDecoding)
{
    for (const QSize& announced :
         {QSize(16384, -32769), QSize(1 << 29, INT_MIN), QSize(2, -1), QSize(2, INT_MIN)}) {
        const int decodedBefore = test::DecodedOddPictures();
        ExpectRefused(test::OddPictureFile({announced, {8, 8}}));
        EXPECT_EQ(test::DecodedOddPictures(), decodedBefore) << announced.height();
    }
    const Directory directory;
    Mesh mesh(0.03f);
    EXPECT_TRUE(LoadRelief(directory.Write(test::OddPictureFile({QSize(8, -8), {8, 8}})), mesh));
}

TEST(ImageRelief, DecodesWhatTheHeaderAllows)
{
    for (const QSize& announced : {QSize(16384, 32768), QSize(2, 2), QSize(2, 1 << 28)}) {
        const int decodedBefore = test::DecodedOddPictures();
        OddPicture picture{announced, {8, 8}};
        picture.loads = false;
        ExpectRefused(test::OddPictureFile(picture));
        EXPECT_EQ(test::DecodedOddPictures(), decodedBefore + 1);
    }
}

TEST(ImageRelief, JudgesByThePictureWhenItsHeaderTellsNothingOrLies)
{
    for (const QSize& announced : {QSize(), QSize(8, 8)}) {
        ExpectRefused(test::OddPictureFile({announced, {1, 8}}));
        ExpectRefused(test::OddPictureFile({announced, {40, 40}}), WithPercent(3));
        // More pixels than can be counted, of one bit each.
        ExpectRefused(test::OddPictureFile({announced, {16384, 32769}, QImage::Format_Mono}));
    }
    const Directory directory;
    Mesh mesh(0.03f);
    EXPECT_TRUE(LoadRelief(directory.Write(test::OddPictureFile({QSize(), {8, 8}})), mesh));
    EXPECT_EQ(mesh.GetVertexNum(), 2 * 8 * 8);
}

TEST(ImageRelief, PictureThatIsEmptyOrCannotBeConvertedIsRefused)
{
    ExpectRefused(test::OddPictureFile({QSize(), QSize()}));
    ExpectRefused(test::OddPictureFile({QSize(8, 8), QSize()}));
    ExpectRefused(test::OddPictureFile({QSize(), {1 << 29, 1}, QImage::Format_Mono}));
}

TEST(ImageReliefThread, ReliefsAreMadeOnSeveralThreadsAtOnce)
{
    const Directory directory;
    std::mt19937 random(24);
    const QImage picture = test::RandomPicture(random, 120, 90);
    const QString path = directory.Write(test::Encoded(picture, "PNG"));
    ReliefArguments arguments = WithBlur(2);
    arguments.scalePercent = 80;
    const test::LiteralRelief expected = test::MakeLiteralRelief(picture, arguments);
    std::vector<std::string> differences(4, "not made");
    std::vector<std::thread> threads;
    for (std::string& difference : differences)
        threads.emplace_back([&] {
            Mesh mesh(0.03f);
            if (LoadRelief(path, mesh, arguments))
                difference = test::DifferenceOf(mesh, expected);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(differences, std::vector<std::string>(4));
}
