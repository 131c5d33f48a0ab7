#include "apps/krmodel/ThreeMfFormat.h"

#include <gtest/gtest.h>

#include "tests/common/Directory.h"

namespace {

using krmodel::Encoding;
using krmodel::Model;
using krmodel::threemf::IsComplete;
using krmodel::threemf::Save;

/// @param faceCounts  of each object
Model Fans(const std::vector<int>& faceCounts)
{
    Model model;
    for (const int faceCount : faceCounts) {
        std::vector<Vector3D<float>> vertices = {{0, 0, 0}, {1, 0, 0}};
        std::vector<TriangleFace> faces;
        for (int i = 0; i < faceCount; ++i) {
            vertices.emplace_back(1.0F, float(i + 1), 0.0F);
            faces.emplace_back(0, i + 1, i + 2);
        }
        model.meshes.push_back(std::make_unique<Mesh>(0.03F));
        model.meshes.back()->AddVertexAndFaces(vertices, faces);
    }
    return model;
}

TEST(ThreeMfFormat, CallsWhatItWroteComplete)
{
    const test::Directory directory;
    const QString fileName = directory.Path(QStringLiteral("fans.3mf"));
    Model model = Fans({3, 0, 2000});
    model.metadata[QStringLiteral("Title")] = QStringLiteral("fans");
    model.colours = {0, {QStringLiteral("#112233")}};
    model.thumbnail = {QStringLiteral("Metadata/a.png"), "no picture"};
    ASSERT_TRUE(Save(fileName, model, Encoding::Binary));
    EXPECT_TRUE(IsComplete(fileName, model, Encoding::Binary));
}

TEST(ThreeMfFormat, CallsAFileThatIsCutAnywhereIncomplete)
{
    const test::Directory directory;
    const Model model = Fans({2, 3});
    const QString fileName = directory.Path(QStringLiteral("fans.3mf"));
    ASSERT_TRUE(Save(fileName, model, Encoding::Binary));
    const QByteArray whole = test::Directory::Read(fileName);
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(IsComplete(directory.Write(whole.left(size)), model, Encoding::Binary)) << size;
    EXPECT_TRUE(IsComplete(directory.Write(whole), model, Encoding::Binary));
}

TEST(ThreeMfFormat, CallsAMissingFileIncomplete)
{
    const test::Directory directory;
    EXPECT_FALSE(IsComplete(directory.Path(QStringLiteral("missing.3mf")), Fans({2, 3}), Encoding::Binary));
}

} // namespace
