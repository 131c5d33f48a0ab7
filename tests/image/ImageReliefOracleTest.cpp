#include <algorithm>
#include <map>
#include <random>
#include <utility>

#include "tests/image/ReliefSupport.h"

// Reliefs of random pictures beside literal ones.

namespace {

using test::LiteralRelief;
using test::ReliefArguments;

constexpr int kRandomPictures = 3000;

int RandomInt(std::mt19937& random, int first, int last)
{
    return std::uniform_int_distribution<int>(first, last)(random);
}

float RandomFloat(std::mt19937& random, float first, float last)
{
    return std::uniform_real_distribution<float>(first, last)(random);
}

ReliefArguments RandomArguments(std::mt19937& random)
{
    ReliefArguments arguments;
    arguments.sizeX = RandomFloat(random, 0.1f, 300);
    arguments.sizeY = RandomFloat(random, 0.1f, 300);
    arguments.blurRadius = RandomInt(random, -3, 6);
    arguments.brightIsHigh = RandomInt(random, 0, 1) == 1;
    arguments.minHeight = RandomFloat(random, 0.1f, 5);
    arguments.maxHeight = RandomFloat(random, 0.1f, 20);
    arguments.scalePercent = RandomInt(random, 30, 130);
    return arguments;
}

bool HasTwoPixelsASide(const QImage& image, int percent)
{
    if (percent >= 100)
        return true;
    const QSize size = image.size().scaled(image.width() * percent / 100, image.height() * percent / 100,
                                           Qt::KeepAspectRatio);
    return size.width() >= 2 && size.height() >= 2;
}

// Every edge is run along once in each direction.
bool IsClosed(const Mesh& mesh)
{
    std::map<std::pair<int, int>, int> runs;
    for (const TriangleFace& face : *mesh.GetFacesVecPtr())
        for (int corner = 0; corner < 3; ++corner)
            ++runs[{face[corner], face[(corner + 1) % 3]}];
    return std::all_of(runs.begin(), runs.end(), [&](const auto& run) {
        const auto back = runs.find({run.first.second, run.first.first});
        return run.second == 1 && back != runs.end();
    });
}

bool EveryVertexIsUsed(const Mesh& mesh)
{
    std::vector<bool> isUsed(mesh.GetVerticesVecPtr()->size());
    for (const TriangleFace& face : *mesh.GetFacesVecPtr())
        for (const int index : face.v)
            isUsed.at(static_cast<std::size_t>(index)) = true;
    return std::all_of(isUsed.begin(), isUsed.end(), [](bool used) { return used; });
}

// The prisms under the two triangles of each cell of the top.
double VolumeOverCells(const Mesh& mesh, int w, int h)
{
    const auto& vertices = *mesh.GetVerticesVecPtr();
    const auto top = [&](int r, int c) { return vertices.at(static_cast<std::size_t>(r * w + c)); };
    double volume = 0;
    for (int r = 0; r + 1 < h; ++r)
        for (int c = 0; c + 1 < w; ++c) {
            const double width = double(top(r, c + 1).x) - double(top(r, c).x);
            const double height = double(top(r, c).y) - double(top(r + 1, c).y);
            const double shared = double(top(r + 1, c).z) + double(top(r, c + 1).z);
            const double heights = 2 * shared + double(top(r, c).z) + double(top(r + 1, c + 1).z);
            volume += width * height / 2 * heights / 3;
        }
    return volume;
}

} // namespace

TEST(ImageReliefOracle, RandomPicturesGiveTheLiteralReliefBitForBit)
{
    const test::Directory directory;
    std::mt19937 random(21);
    int accepted = 0, blurred = 0, scaled = 0;
    for (int i = 0; i < kRandomPictures; ++i) {
        const int width = RandomInt(random, 2, 40), height = RandomInt(random, 2, 40);
        const QImage picture = test::RandomPicture(random, width, height);
        const ReliefArguments arguments = RandomArguments(random);
        const QString path = directory.Write(test::Encoded(picture, "BMP"));
        Mesh mesh(0.03f);
        const bool hasPixels = HasTwoPixelsASide(picture, arguments.scalePercent);
        ASSERT_EQ(test::LoadRelief(path, mesh, arguments), hasPixels)
            << width << ' ' << height << ' ' << arguments.scalePercent;
        if (!hasPixels)
            continue;
        ASSERT_EQ(test::DifferenceOf(mesh, test::MakeLiteralRelief(picture, arguments)), "") << i;
        ASSERT_EQ(mesh.GetVolume(), mesh.CalcuateVolume()) << i;
        ++accepted;
        blurred += arguments.blurRadius > 0;
        scaled += arguments.scalePercent < 100;
    }
    // Each kind must have been seen often.
    EXPECT_GT(accepted, kRandomPictures * 9 / 10);
    EXPECT_GT(blurred, kRandomPictures / 3);
    EXPECT_GT(scaled, kRandomPictures / 3);
}

// Wider and higher than what is worked on at once.
TEST(ImageReliefOracle, LargePicturesGiveTheLiteralReliefBitForBit)
{
    std::mt19937 random(22);
    for (const QSize& size :
         {QSize(2, 3000), QSize(3000, 2), QSize(1025, 7), QSize(257, 513), QSize(514, 130)}) {
        const QImage picture = test::RandomPicture(random, size.width(), size.height());
        const ReliefArguments arguments;
        const Mesh mesh = test::ReliefOf(picture, arguments);
        EXPECT_EQ(test::DifferenceOf(mesh, test::MakeLiteralRelief(picture, arguments)), "");
        EXPECT_EQ(mesh.GetVolume(), mesh.CalcuateVolume());
    }
}

TEST(ImageReliefOracle, ReliefsAreClosedOutwardAndAsLargeAsTheirCells)
{
    std::mt19937 random(23);
    for (int i = 0; i < 300; ++i) {
        const int width = RandomInt(random, 2, 40), height = RandomInt(random, 2, 40);
        ReliefArguments arguments = RandomArguments(random);
        arguments.scalePercent = 100;
        const Mesh mesh = test::ReliefOf(test::RandomPicture(random, width, height), arguments);
        ASSERT_TRUE(IsClosed(mesh)) << width << ' ' << height;
        ASSERT_TRUE(EveryVertexIsUsed(mesh)) << width << ' ' << height;
        const double expected = VolumeOverCells(mesh, width, height);
        ASSERT_GT(mesh.GetVolume(), 0);
        ASSERT_NEAR(mesh.GetVolume() / expected, 1, 1e-9);
    }
}

TEST(ImageReliefOracle, AnySizeAndPercentageGivesTheSizeThatScalingGives)
{
    const test::Directory directory;
    for (int width = 2; width <= 23; width += 3)
        for (int height = 2; height <= 23; height += 3) {
            QImage picture(width, height, QImage::Format_RGB32);
            picture.fill(Qt::gray);
            const QString path = directory.Write(test::Encoded(picture, "BMP"));
            for (int percent = 1; percent <= 99; ++percent) {
                const QImage scaled = picture.scaled(width * percent / 100, height * percent / 100,
                                                     Qt::KeepAspectRatio, Qt::SmoothTransformation);
                const bool hasPixels = scaled.width() >= 2 && scaled.height() >= 2;
                ReliefArguments arguments;
                arguments.scalePercent = percent;
                Mesh mesh(0.03f);
                ASSERT_EQ(test::LoadRelief(path, mesh, arguments), hasPixels)
                    << width << ' ' << height << ' ' << percent;
                ASSERT_EQ(mesh.GetVertexNum(), hasPixels ? 2 * scaled.width() * scaled.height() : 0);
            }
        }
}
