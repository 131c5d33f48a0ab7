#include "apps/krmodel/Renderer.h"

#include <cmath>
#include <limits>
#include <set>

#include <gtest/gtest.h>

#include "apps/krmodel/CornerNormals.h"
#include "apps/krmodel/Placement.h"
#include "apps/krmodel/Scene.h"

namespace {

using krmodel::Camera;
using krmodel::CornerNormals;
using krmodel::kViews;
using krmodel::Model;
using krmodel::RenderModel;
using krmodel::Scene;
using krmodel::View;

using Point = Vector3D<float>;

constexpr QSize kSize(60, 40);
constexpr View kFront{"front", 0, 0};

void AddMesh(Model& model, const std::vector<Point>& vertices, const std::vector<TriangleFace>& faces)
{
    auto mesh = std::make_unique<Mesh>(0.03F);
    mesh->AddVertexAndFaces(vertices, faces);
    mesh->PostProcess(false, false, true, true, nullptr, nullptr);
    model.meshes.push_back(std::move(mesh));
}

Model Tetrahedron(float size)
{
    Model model;
    AddMesh(model, {{0, 0, 0}, {size, 0, 0}, {0, size, 0}, {0, 0, size}},
            {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}});
    return model;
}

/// A square in the plane y = 0 that turns its front or its back to the viewer.
Model Square(bool showsFront)
{
    Model model;
    const std::vector<Point> vertices = {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}};
    if (showsFront)
        AddMesh(model, vertices, {{0, 1, 2}, {0, 2, 3}});
    else
        AddMesh(model, vertices, {{0, 2, 1}, {0, 3, 2}});
    return model;
}

QImage Backdrop(const View& view, QSize size)
{
    return RenderModel(Model(), view, size);
}

QRgb Middle(const QImage& image)
{
    return image.pixel(image.width() / 2, image.height() / 2);
}

template<class Predicate>
int CountPixels(const QImage& image, const QImage& backdrop, Predicate isCounted)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += isCounted(image.pixel(x, y), backdrop.pixel(x, y)) ? 1 : 0;
    return count;
}

int CountDrawnPixels(const Model& model, const View& view)
{
    return CountPixels(RenderModel(model, view, kSize), Backdrop(view, kSize),
                       [](QRgb pixel, QRgb behind) { return pixel != behind; });
}

TEST(Renderer, DrawsTheBackdropAloneForAModelWithoutFaces)
{
    Model noFaces;
    AddMesh(noFaces, {{1, 2, 3}}, {});
    EXPECT_EQ(RenderModel(noFaces, kViews[0], kSize).size(), kSize);
    EXPECT_EQ(CountDrawnPixels(noFaces, kViews[0]), 0);
}

TEST(Renderer, FillsThePictureWhateverTheSizeOfTheModel)
{
    for (const float size : {1e-30F, 0.001F, 1.0F, 1e6F, 3e38F})
        EXPECT_GT(CountDrawnPixels(Tetrahedron(size), kViews[0]), kSize.width() * kSize.height() / 8) << size;
}

TEST(Renderer, ShowsTheWholeModelFromEachSide)
{
    for (const View& view : kViews) {
        const QImage image = RenderModel(Tetrahedron(10), view, kSize), backdrop = Backdrop(view, kSize);
        EXPECT_GT(CountDrawnPixels(Tetrahedron(10), view), 250) << view.name;
        // The surface is blue; the border of the picture shows the backdrop or a grey shadow.
        for (int x = 0; x < kSize.width(); ++x)
            for (const int y : {0, kSize.height() - 1})
                EXPECT_LT(qBlue(image.pixel(x, y)) - qRed(image.pixel(x, y)), 16) << view.name;
    }
}

TEST(Renderer, LeavesOutFacesWithBadIndicesOrCornersThatAreNotFinite)
{
    constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Model bad;
    AddMesh(bad, {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}, {kNotANumber, 0, 0}, {0, kInfinity, 0}},
            {{0, 1, 2}, {0, 2, 3}, {0, 1, 4}, {0, 5, 2}, {0, 1, 99}, {-1, 1, 2}, {0, 0, 1}, {2, 2, 2}});
    EXPECT_EQ(RenderModel(bad, kFront, kSize), RenderModel(Square(true), kFront, kSize));
}

TEST(Renderer, GivesTheBackOfASurfaceAnotherColour)
{
    const QRgb front = Middle(RenderModel(Square(true), kFront, kSize));
    const QRgb back = Middle(RenderModel(Square(false), kFront, kSize));
    EXPECT_GT(qBlue(front), qRed(front) + 50);
    EXPECT_GT(qRed(back), qBlue(back) + 50);
}

TEST(Renderer, SmoothsTheBordersOfShapes)
{
    const QImage image = RenderModel(Square(true), {"turned", 20, 0}, kSize);
    const auto isMixed = [](QRgb pixel) { return qBlue(pixel) - qRed(pixel) > 20 && qRed(pixel) > 150; };
    std::set<QRgb> mixed;
    for (int y = 0; y < kSize.height(); ++y)
        for (int x = 0; x < kSize.width(); ++x)
            if (isMixed(image.pixel(x, y)))
                mixed.insert(image.pixel(x, y));
    EXPECT_GT(mixed.size(), 5U);
}

TEST(Renderer, ThrowsAShadowOnTheGround)
{
    Model raised;
    AddMesh(raised, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
    // A speck below it puts the ground there.
    AddMesh(raised, {{0.5F, 0.5F, -0.6F}, {0.501F, 0.5F, -0.6F}, {0.5F, 0.501F, -0.6F}}, {{0, 1, 2}});
    const QSize size(100, 100);
    const auto isShadow = [](QRgb pixel, QRgb behind) {
        return qAbs(qRed(pixel) - qBlue(pixel)) < 16 && qGray(pixel) < qGray(behind) - 20;
    };
    EXPECT_GT(CountPixels(RenderModel(raised, kViews[0], size), Backdrop(kViews[0], size), isShadow), 100);
}

TEST(Renderer, ShowsAMirroredMeshFromOutsideOncePlaced)
{
    Matrix4<double> mirror;
    mirror.set(0, 0, -1.0);
    Model mirrored = Square(true);
    mirrored.meshes[0]->SetTransformMatrix(mirror);
    krmodel::PlaceInMillimetres(mirrored);
    EXPECT_EQ(Middle(RenderModel(mirrored, kFront, kSize)), Middle(RenderModel(Square(true), kFront, kSize)));
}

TEST(Renderer, GivesTheSamePictureWhicheverThreadDrawsARow)
{
    const QImage first = RenderModel(Tetrahedron(1), kViews[0], kSize);
    for (int repeat = 0; repeat < 20; ++repeat)
        EXPECT_EQ(RenderModel(Tetrahedron(1), kViews[0], kSize), first);
}

TEST(Renderer, DrawsAMeshThatProvidesNoNeighbours)
{
    Model light = Tetrahedron(1);
    light.meshes[0]->PostProcess(false, false, false, false, nullptr, nullptr);
    EXPECT_GT(CountDrawnPixels(light, kViews[0]), 300);
}

/// A square that faces the viewer in two triangles, the lower right one of the first group, the upper left
/// one of the second.
Model SquareOfTwoGroups()
{
    Model model = Square(true);
    model.groups.resize(2);
    for (int i = 0; i < 2; ++i) {
        model.groups[size_t(i)].firstFaceIndex = i;
        model.groups[size_t(i)].faceCount = 1;
    }
    return model;
}

constexpr QPoint kLowerRight(34, 24), kUpperLeft(26, 16);

bool IsGreen(QRgb pixel)
{
    return qGreen(pixel) > qRed(pixel) + 50 && qGreen(pixel) > qBlue(pixel) + 50;
}

TEST(Renderer, ShowsEachGroupInItsColour)
{
    Model model = SquareOfTwoGroups();
    model.groups[1].material.setDiffuse({0, 1, 0});
    const QImage image = RenderModel(model, kFront, kSize);
    EXPECT_TRUE(IsGreen(image.pixel(kUpperLeft)));
    EXPECT_EQ(image.pixel(kLowerRight), RenderModel(Square(true), kFront, kSize).pixel(kLowerRight));
}

TEST(Renderer, ShowsOneColourWhenTheGroupsDoNotFitTheFaces)
{
    Model model = SquareOfTwoGroups();
    for (MeshTextureGroup& group : model.groups)
        group.material.setDiffuse({0, 1, 0});
    model.groups[1].faceCount = 2'000'000'000;
    EXPECT_EQ(RenderModel(model, kFront, kSize), RenderModel(Square(true), kFront, kSize));
}

/// Two squares side by side.
Model TwoObjects(const char* firstName, const char* secondName)
{
    Model model = Square(true);
    AddMesh(model, {{2, 0, 0}, {3, 0, 0}, {3, 0, 1}, {2, 0, 1}}, {{0, 1, 2}, {0, 2, 3}});
    model.meshes[0]->SetObjectName(QString::fromLatin1(firstName));
    model.meshes[1]->SetObjectName(QString::fromLatin1(secondName));
    return model;
}

struct TwoColours {
    QRgb first, second;
};

TwoColours ColoursOf(const Model& model)
{
    const QImage image = RenderModel(model, kFront, kSize);
    return {image.pixel(14, 20), image.pixel(46, 20)};
}

bool AreAlike(QRgb a, QRgb b)
{
    return qAbs(qRed(a) - qRed(b)) + qAbs(qGreen(a) - qGreen(b)) + qAbs(qBlue(a) - qBlue(b)) < 40;
}

TEST(Renderer, GivesObjectsOfDifferentNamesDifferentColours)
{
    const TwoColours colours = ColoursOf(TwoObjects("block", "screw"));
    EXPECT_TRUE(AreAlike(colours.first, Middle(RenderModel(Square(true), kFront, kSize))));
    EXPECT_FALSE(AreAlike(colours.first, colours.second));
}

TEST(Renderer, GivesObjectsOfOneNameOneColour)
{
    const TwoColours colours = ColoursOf(TwoObjects("screw", "screw"));
    EXPECT_TRUE(AreAlike(colours.first, colours.second));
}

TEST(Renderer, GivesObjectsWithoutANameAColourEach)
{
    const TwoColours colours = ColoursOf(TwoObjects("", ""));
    EXPECT_FALSE(AreAlike(colours.first, colours.second));
}

TEST(Renderer, TakesTheColoursOfThePackageInTheirOrder)
{
    Model model = TwoObjects("", "");
    model.colours = {7, {QStringLiteral("#FF0000"), QStringLiteral("odd"), QStringLiteral("#00FF0080")}};
    const TwoColours colours = ColoursOf(model);
    EXPECT_GT(qRed(colours.first), qGreen(colours.first) + 100);
    EXPECT_TRUE(IsGreen(colours.second));
}

TEST(Renderer, BeginsAgainWhenThereAreMoreObjectsThanColours)
{
    Model model = TwoObjects("", "");
    model.colours = {7, {QStringLiteral("#00FF00")}};
    const TwoColours colours = ColoursOf(model);
    EXPECT_TRUE(IsGreen(colours.first));
    EXPECT_TRUE(IsGreen(colours.second));
}

TEST(Renderer, DrawsBeforeOneColour)
{
    const krmodel::Background plain{krmodel::Decoded(0xFF203040), krmodel::Decoded(0xFF203040), false};
    const QImage image = RenderModel(Square(true), kFront, kSize, plain);
    EXPECT_EQ(image.pixel(0, 0), 0xFF203040);
    EXPECT_EQ(image.pixel(0, kSize.height() - 1), 0xFF203040);
    EXPECT_EQ(Middle(image), Middle(RenderModel(Square(true), kFront, kSize)));
}

TEST(Renderer, LeavesWhatIsBehindTransparent)
{
    const krmodel::Background none{{0, 0, 0}, {0, 0, 0}, true};
    const QImage image = RenderModel(Square(true), {"turned", 20, 0}, kSize, none);
    std::set<int> opacities;
    for (int y = 0; y < kSize.height(); ++y)
        for (int x = 0; x < kSize.width(); ++x)
            opacities.insert(qAlpha(image.pixel(x, y)));
    EXPECT_EQ(image.pixel(0, 0), 0U);
    EXPECT_EQ(*opacities.begin(), 0);
    EXPECT_EQ(*opacities.rbegin(), 255);
    EXPECT_GT(opacities.size(), 4U) << "borders are smooth";
    // A pixel of the border has the colour of the square, not darkened by the nothing beside it.
    const QRgb square = Middle(image);
    const auto isUnlike = [&](QRgb pixel, QRgb) { return qAlpha(pixel) > 30 && !AreAlike(pixel, square); };
    EXPECT_EQ(CountPixels(image, image, isUnlike), 0);
}

TEST(Renderer, DarkensWhatIsBehindAShadowByItsOpacity)
{
    Model raised;
    AddMesh(raised, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
    AddMesh(raised, {{0.5F, 0.5F, -0.6F}, {0.501F, 0.5F, -0.6F}, {0.5F, 0.501F, -0.6F}}, {{0, 1, 2}});
    const QImage image = RenderModel(raised, kViews[0], {100, 100}, {{0, 0, 0}, {0, 0, 0}, true});
    const auto isShadow = [](QRgb pixel, QRgb) {
        return qAlpha(pixel) > 40 && qAlpha(pixel) < 70 && qGray(pixel) == 0;
    };
    EXPECT_GT(CountPixels(image, image, isShadow), 100);
}

/// The left half of the texture is red, the right half green.
void AddTexture(Model& model)
{
    QImage picture(2, 1, QImage::Format_RGB32);
    picture.setPixel(0, 0, 0xFFFF0000);
    picture.setPixel(1, 0, 0xFF00FF00);
    for (MeshTextureGroup& group : model.groups)
        EXPECT_TRUE(group.material.diffuseTexture.load(picture, false, false, false, 0));
    // The same corners as the square's, a quarter further in, where the texels' colours are pure.
    *model.meshes[0]->GetTexCoordVecPtr() = {{0.25F, 0}, {0.75F, 0}, {0.75F, 1}, {0.25F, 1}};
    *model.meshes[0]->GetTextureFacesVecPtr() = *model.meshes[0]->GetFacesVecPtr();
}

TEST(Renderer, LaysTheTextureOnTheFaces)
{
    Model model = SquareOfTwoGroups();
    AddTexture(model);
    const QImage image = RenderModel(model, kFront, kSize);
    const QPoint left(18, 20), right(42, 20), middle(30, 20);
    EXPECT_GT(qRed(image.pixel(left)), qGreen(image.pixel(left)) + 100);
    EXPECT_GT(qGreen(image.pixel(right)), qRed(image.pixel(right)) + 100);
    EXPECT_LT(qAbs(qRed(image.pixel(middle)) - qGreen(image.pixel(middle))), 40);
}

TEST(Renderer, ShowsTheDiffuseColourWhenTextureFacesDoNotFit)
{
    const std::vector<TriangleFace> hostile[] = {
        {{0, 1, 2}}, {{0, 1, 2}, {0, 1, 4}}, {{0, 1, 2}, {0, -1, 2}}, {{0, 1, 2}, {0, 1, 2'000'000'000}}};
    for (const std::vector<TriangleFace>& textureFaces : hostile) {
        Model model = SquareOfTwoGroups();
        AddTexture(model);
        for (MeshTextureGroup& group : model.groups)
            group.material.setDiffuse({0, 1, 0});
        *model.meshes[0]->GetTextureFacesVecPtr() = textureFaces;
        const QImage image = RenderModel(model, kFront, kSize);
        EXPECT_TRUE(IsGreen(image.pixel(kUpperLeft)));
        EXPECT_TRUE(IsGreen(image.pixel(kLowerRight)));
    }
}

Scene SceneOf(const Model& model)
{
    Camera camera(kFront, kSize);
    return krmodel::BuildScene(model, camera);
}

/// A round wall of flat sides, three faces a side: two of the wall, one of the lid.
Model RoundWithLid(int sides)
{
    std::vector<Point> vertices = {{0, 0, 1}};
    std::vector<TriangleFace> faces;
    for (int i = 0; i < sides; ++i) {
        const double angle = 6.283185307179586 * i / sides;
        vertices.emplace_back(float(std::cos(angle)), float(std::sin(angle)), 0.0F);
        vertices.emplace_back(float(std::cos(angle)), float(std::sin(angle)), 1.0F);
        const int low = 1 + 2 * i, next = 1 + 2 * ((i + 1) % sides);
        faces.insert(faces.end(), {{low, next, next + 1}, {low, next + 1, low + 1}, {0, low + 1, next + 1}});
    }
    Model model;
    AddMesh(model, vertices, faces);
    return model;
}

TEST(CornerNormals, AreSmoothAcrossGentleEdgesAndBrokenAtCreases)
{
    constexpr int kSides = 24;
    const Scene scene = SceneOf(RoundWithLid(kSides));
    const CornerNormals normals(scene);
    for (int side = 0; side < kSides; ++side) {
        const int wall = 3 * side, lid = 3 * side + 2;
        const Eigen::Vector3f& corner = scene.points[size_t(scene.faces[size_t(wall)][2])];
        // Outwards like the circle: neither flat nor tilted by the lid.
        EXPECT_GT(normals.At(wall, 2).dot((corner - scene.points[0]).normalized()), 0.998F) << side;
        // In this view the model's z is the picture's y.
        EXPECT_GT(normals.At(lid, 1).y(), 0.9999F) << side;
    }
}

TEST(CornerNormals, StayFlatOnAShapeOfCreases)
{
    const CornerNormals normals(SceneOf(Tetrahedron(1)));
    for (int face = 0; face < 4; ++face) {
        EXPECT_TRUE(normals.At(face, 0).isApprox(normals.At(face, 1)));
        EXPECT_TRUE(normals.At(face, 0).isApprox(normals.At(face, 2)));
    }
    EXPECT_FALSE(normals.At(0, 0).isApprox(normals.At(1, 0)));
}

TEST(CornerNormals, AreZeroForAFaceWithoutArea)
{
    Model model;
    AddMesh(model, {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, {{0, 1, 2}});
    EXPECT_EQ(CornerNormals(SceneOf(model)).At(0, 0).norm(), 0.0F);
}

} // namespace
