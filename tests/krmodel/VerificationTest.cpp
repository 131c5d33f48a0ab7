#include "apps/krmodel/Verification.h"

#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "apps/krmodel/Failure.h"
#include "apps/krmodel/ModelFile.h"
#include "tests/common/Directory.h"

namespace {

using krmodel::Encoding;
using krmodel::FindDifference;
using krmodel::FindFormat;
using krmodel::Format;
using krmodel::Model;
using krmodel::Rounded;
using krmodel::Rounding;

using Points = std::vector<Vector3D<float>>;

void AddMesh(Model& model, const Points& vertices, const std::vector<TriangleFace>& faces)
{
    model.meshes.push_back(std::make_unique<Mesh>(0.03F));
    model.meshes.back()->AddVertexAndFaces(vertices, faces);
}

Points TetrahedronCorners()
{
    return {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
}

std::vector<TriangleFace> TetrahedronFaces()
{
    return {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
}

Model Tetrahedron()
{
    Model model;
    AddMesh(model, TetrahedronCorners(), TetrahedronFaces());
    return model;
}

/// Corners of many sizes, ties of both kinds of rounding among them.
Model ManyFacets()
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> exponent(-25, 40), numerator(-100'000, 100'000);
    Points vertices;
    std::vector<TriangleFace> faces;
    const auto coordinate = [&] { return std::ldexp(float(numerator(random)), exponent(random) - 12); };
    for (int i = 0; i < 3000; ++i) {
        for (int corner = 0; corner < 3; ++corner)
            vertices.emplace_back(coordinate(), float(numerator(random)) / 128, float(numerator(random)));
        faces.emplace_back(3 * i, 3 * i + 1, 3 * i + 2);
    }
    Model model;
    AddMesh(model, vertices, faces);
    return model;
}

const Format& FormatOf(const char* suffix)
{
    return *FindFormat(QStringLiteral("a.") + QLatin1String(suffix));
}

constexpr struct {
    const char* suffix;
    Encoding encoding;
} kWritten[] = {
    {"stl", Encoding::Binary}, {"stl", Encoding::Text}, {"obj", Encoding::Text}, {"3mf", Encoding::Binary}};

QString DifferenceText(const Format& format, const QString& fileName, const Model& model, Encoding encoding)
{
    return FindDifference(format, fileName, model, encoding).value_or(QString());
}

TEST(Rounding, GivesTheNumberThatStandsInTheFile)
{
    EXPECT_EQ(Rounded(0.1234567F, Rounding::None), 0.1234567F);
    EXPECT_EQ(Rounded(0.1234567F, Rounding::SixDecimals), 0.123457F);
    EXPECT_EQ(Rounded(1234.56789F, Rounding::SixDecimals), 1234.567871F);
    EXPECT_EQ(Rounded(4e-7F, Rounding::SixDecimals), 0.0F);
    EXPECT_EQ(Rounded(-1.0F / 128, Rounding::SixDecimals), -0.007813F);
    EXPECT_EQ(Rounded(3e20F, Rounding::SixDecimals), 3e20F);
    EXPECT_EQ(Rounded(0.01234567F, Rounding::SixDigits), 0.0123457F);
    EXPECT_EQ(Rounded(-1234567, Rounding::SixDigits), -1234570.0F);
    EXPECT_EQ(Rounded(999999.5F, Rounding::SixDigits), 1e6F);
    EXPECT_EQ(Rounded(0, Rounding::SixDigits), 0.0F);
    EXPECT_TRUE(std::isnan(Rounded(std::numeric_limits<float>::quiet_NaN(), Rounding::SixDigits)));
    EXPECT_TRUE(std::isinf(Rounded(std::numeric_limits<float>::infinity(), Rounding::SixDecimals)));
}

TEST(Verification, FindsNoDifferenceInWhatEachFormatWrites)
{
    const test::Directory directory;
    const Model model = ManyFacets();
    for (const auto& [suffix, encoding] : kWritten) {
        const Format& format = FormatOf(suffix);
        const QString fileName = directory.Path(QStringLiteral("many.") + QLatin1String(suffix));
        ASSERT_TRUE(format.save(fileName, model, encoding));
        EXPECT_EQ(DifferenceText(format, fileName, model, encoding).toStdString(), "") << suffix;
    }
}

TEST(Verification, CountsFacetsThatFallTogetherByRounding)
{
    const test::Directory directory;
    Model model = Tetrahedron();
    (*model.meshes[0]->GetVerticesVecPtr())[1] = {1e-9F, 0, 0};
    for (const auto& [suffix, encoding] : kWritten) {
        const Format& format = FormatOf(suffix);
        const QString fileName = directory.Path(QStringLiteral("flat.") + QLatin1String(suffix));
        ASSERT_TRUE(format.save(fileName, model, encoding));
        EXPECT_EQ(DifferenceText(format, fileName, model, encoding).toStdString(), "") << suffix;
    }
}

TEST(Verification, TellsWhatDiffersInEachFormat)
{
    const test::Directory directory;
    Model fewer, wider = Tetrahedron(), dented = Tetrahedron();
    AddMesh(fewer, TetrahedronCorners(), {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}});
    (*wider.meshes[0]->GetVerticesVecPtr())[1].x = 1.001F;
    // The other corners keep the bounds.
    (*dented.meshes[0]->GetVerticesVecPtr())[0] = {0.001F, 0.001F, 0};
    const struct {
        const Model& written;
        const char* difference;
    } kSpoilt[] = {{fewer, "it holds 3 facets instead of 4"},
                   {wider, "its bounds differ along x"},
                   {dented, "its facets enclose another volume"}};
    for (const auto& [suffix, encoding] : kWritten) {
        const Format& format = FormatOf(suffix);
        const QString fileName = directory.Path(QStringLiteral("spoilt.") + QLatin1String(suffix));
        for (const auto& spoilt : kSpoilt) {
            ASSERT_TRUE(format.save(fileName, spoilt.written, encoding));
            EXPECT_EQ(DifferenceText(format, fileName, Tetrahedron(), encoding).toStdString(),
                      spoilt.difference)
                << suffix;
        }
    }
}

TEST(Verification, SeesAFacetThatWasTurnedRound)
{
    const test::Directory directory;
    Model turned = Tetrahedron();
    // Not one that the first corner lies in: its volume as seen from there is 0 either way.
    std::swap((*turned.meshes[0]->GetFacesVecPtr())[2][0], (*turned.meshes[0]->GetFacesVecPtr())[2][1]);
    for (const auto& [suffix, encoding] : kWritten) {
        const QString fileName = directory.Path(QStringLiteral("turned.") + QLatin1String(suffix));
        ASSERT_TRUE(FormatOf(suffix).save(fileName, turned, encoding));
        EXPECT_EQ(DifferenceText(FormatOf(suffix), fileName, Tetrahedron(), encoding).toStdString(),
                  "its facets enclose another volume")
            << suffix;
    }
}

TEST(Verification, ComparesObjectsOneByOne)
{
    const test::Directory directory;
    const QString fileName = directory.Path(QStringLiteral("two.3mf"));
    Model two = Tetrahedron();
    AddMesh(two, TetrahedronCorners(), TetrahedronFaces());
    const Format& format = FormatOf("3mf");
    const auto difference = [&](const Model& written) {
        return DifferenceText(format, fileName, written, Encoding::Binary).toStdString();
    };
    ASSERT_TRUE(format.save(fileName, two, Encoding::Binary));
    EXPECT_EQ(difference(two), "");
    EXPECT_EQ(difference(Tetrahedron()), "it holds 2 objects instead of 1");
    Matrix4<double> moved;
    moved.set(0, 3, 5);
    two.meshes[1]->SetTransformMatrix(moved);
    EXPECT_EQ(difference(two), "an object lies in another place");
    two.meshes[1]->SetTransformMatrix({});
    two.thumbnail.bytes = "picture";
    EXPECT_EQ(difference(two), "the thumbnail is missing");
    two.colours = {0, {QStringLiteral("#112233")}};
    EXPECT_EQ(difference(two), "colours are missing");
    two.metadata[QStringLiteral("Title")] = QStringLiteral("two");
    EXPECT_EQ(difference(two), "metadata are missing");
}

TEST(Verification, CannotReadWhatIsMissingOrCut)
{
    const test::Directory directory;
    for (const auto& [suffix, encoding] : kWritten) {
        const Format& format = FormatOf(suffix);
        const QString fileName = directory.Path(QStringLiteral("cut.") + QLatin1String(suffix));
        EXPECT_TRUE(FindDifference(format, fileName, Tetrahedron(), encoding)) << suffix;
        ASSERT_TRUE(format.save(fileName, Tetrahedron(), encoding));
        const QByteArray whole = test::Directory::Read(fileName);
        const QString name = QStringLiteral("cut.") + QLatin1String(suffix);
        directory.Write(whole.left(whole.size() / 2), name);
        EXPECT_TRUE(FindDifference(format, fileName, Tetrahedron(), encoding)) << suffix;
    }
}

bool SaveWithoutTheLastFace(const QString& fileName, const Model& model, Encoding encoding)
{
    model.meshes[0]->SetFaceNum(model.meshes[0]->GetFaceNum() - 1);
    const bool isSaved = FormatOf("obj").save(fileName, model, encoding);
    model.meshes[0]->SetFaceNum(model.meshes[0]->GetFaceNum() + 1);
    return isSaved;
}

bool IsAlwaysComplete(const QString&, const Model&, Encoding)
{
    return true;
}

TEST(Verification, KeepsTheOldFileWhenAWriterSpoilsSomething)
{
    const test::Directory directory;
    const QString fileName = directory.Write("old", QStringLiteral("model.obj"));
    Format format = FormatOf("obj");
    format.save = SaveWithoutTheLastFace;
    format.isComplete = IsAlwaysComplete;
    const krmodel::Output output{krmodel::PendingFile(fileName), &format, Encoding::Text};
    try {
        SaveModel(output, Tetrahedron());
        FAIL() << "saved";
    } catch (const krmodel::Failure& failure) {
        EXPECT_EQ(failure.GetCode(), krmodel::ExitCode::WriteFailed);
        EXPECT_EQ(failure.what(), fileName.toStdString() +
                                      ": not written, the file did not come out right: it "
                                      "holds 3 facets instead of 4");
    }
    output.file.Discard();
    EXPECT_EQ(test::Directory::Read(fileName), QByteArray("old"));
}

} // namespace
