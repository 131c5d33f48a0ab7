#include "apps/krmodel/ObjFormat.h"

#include <gtest/gtest.h>

#include "tests/common/Directory.h"

namespace {

using krmodel::Encoding;
using krmodel::Model;

/// A strip of triangles; more than one block of the reader that checks the file.
Model Strip(int faceCount)
{
    std::vector<Vector3D<float>> vertices;
    std::vector<TriangleFace> faces;
    for (int i = 0; i < faceCount + 2; ++i)
        vertices.emplace_back(float(i / 2), float(i % 2), 0.0F);
    for (int i = 0; i < faceCount; ++i)
        faces.emplace_back(i, i + 1 + i % 2, i + 2 - i % 2);
    Model model;
    model.meshes.push_back(std::make_unique<Mesh>(0.03F));
    model.meshes[0]->AddVertexAndFaces(vertices, faces);
    return model;
}

TEST(ObjFormat, CallsWhatItWroteComplete)
{
    const test::Directory directory;
    const QString fileName = directory.Path(QStringLiteral("strip.obj"));
    for (const int faceCount : {0, 1, 7, 60'000}) {
        const Model model = Strip(faceCount);
        ASSERT_TRUE(krmodel::obj::Save(fileName, model, Encoding::Text));
        EXPECT_TRUE(krmodel::obj::IsComplete(fileName, model, Encoding::Text)) << faceCount;
    }
}

TEST(ObjFormat, CallsAFileThatIsCutAnywhereIncomplete)
{
    const test::Directory directory;
    const Model model = Strip(7);
    const QString fileName = directory.Path(QStringLiteral("strip.obj"));
    ASSERT_TRUE(krmodel::obj::Save(fileName, model, Encoding::Text));
    const QByteArray whole = test::Directory::Read(fileName);
    for (int size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(krmodel::obj::IsComplete(directory.Write(whole.left(size)), model, Encoding::Text))
            << size;
    EXPECT_TRUE(krmodel::obj::IsComplete(directory.Write(whole), model, Encoding::Text));
}

TEST(ObjFormat, CallsAFileOfFewerFacesIncomplete)
{
    const test::Directory directory;
    const QString fileName = directory.Path(QStringLiteral("strip.obj"));
    ASSERT_TRUE(krmodel::obj::Save(fileName, Strip(6), Encoding::Text));
    EXPECT_FALSE(krmodel::obj::IsComplete(fileName, Strip(7), Encoding::Text));
    EXPECT_FALSE(
        krmodel::obj::IsComplete(directory.Path(QStringLiteral("missing.obj")), Strip(7), Encoding::Text));
}

/// A line ends between two blocks at one of these lengths.
TEST(ObjFormat, CountsFacesWhereverABlockEnds)
{
    const test::Directory directory;
    const Model model = Strip(2);
    for (int shift = -8; shift <= 8; ++shift) {
        const QByteArray text = QByteArray((1 << 20) + shift, '#') + "\nf 1 2 3\nf 1 3 2\n";
        EXPECT_TRUE(krmodel::obj::IsComplete(directory.Write(text), model, Encoding::Text)) << shift;
    }
}

} // namespace
