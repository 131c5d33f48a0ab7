#include <limits>

#include <gtest/gtest.h>

#include <QtEndian>

#include "apps/krmodel/Failure.h"
#include "apps/krmodel/ModelFile.h"
#include "apps/krmodel/Verification.h"
#include "tests/common/Directory.h"

namespace {

using krmodel::Encoding;
using krmodel::Facet;
using krmodel::FindFormat;
using krmodel::Model;

constexpr Facet kFacet = {Vector3D<float>(0, 0, 0), Vector3D<float>(1, 0, 0), Vector3D<float>(0, 1, 0)};

Model ModelOf(const Facet& facet, const TriangleFace& face = {0, 1, 2})
{
    Model model;
    model.meshes.push_back(std::make_unique<Mesh>(0.03F));
    model.meshes[0]->AddVertexAndFaces({facet[0], facet[1], facet[2]}, {face});
    return model;
}

QByteArray BinaryStl(const std::vector<Facet>& facets)
{
    QByteArray bytes(84, '\0');
    qToLittleEndian(quint32(facets.size()), bytes.data() + 80);
    for (const Facet& facet : facets)
        bytes += QByteArray(12, '\0') +
                 QByteArray(reinterpret_cast<const char*>(facet.data()), sizeof facet) + QByteArray(2, '\0');
    return bytes;
}

std::string DifferenceOf(const QByteArray& bytes, const Model& written)
{
    const test::Directory directory;
    const auto difference = krmodel::FindDifference(*FindFormat(QStringLiteral("a.stl")),
                                                    directory.Write(bytes), written, Encoding::Binary);
    return difference.value_or(QString()).toStdString();
}

TEST(SavedFile, MayHoldNothingWhereThereIsNothing)
{
    EXPECT_EQ(DifferenceOf(BinaryStl({}), Model()), "");
    EXPECT_EQ(DifferenceOf(BinaryStl({kFacet}), Model()), "it holds 1 facets instead of 0");
}

TEST(SavedFile, DiffersWhenACornerLostItsNumber)
{
    const float none = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(DifferenceOf(BinaryStl({kFacet}), ModelOf(kFacet)), "");
    for (const Vector3D<float>& corner :
         {Vector3D<float>(none, 0, 0), Vector3D<float>(0, none, 0), Vector3D<float>(0, 0, none)}) {
        const Facet spoilt = {corner, kFacet[1], kFacet[2]};
        EXPECT_EQ(DifferenceOf(BinaryStl({spoilt}), ModelOf(kFacet)),
                  "it holds 0 facets with finite corners instead of 1");
        EXPECT_EQ(DifferenceOf(BinaryStl({spoilt}), ModelOf(spoilt)), "");
    }
}

TEST(SavedFile, DiffersWhenItReachesLessFarOrFurther)
{
    const Model written = ModelOf(kFacet);
    EXPECT_EQ(DifferenceOf(BinaryStl({{kFacet[0], Vector3D<float>(2, 0, 0), kFacet[2]}}), written),
              "its bounds differ along x");
    EXPECT_EQ(DifferenceOf(BinaryStl({{kFacet[0], kFacet[1], Vector3D<float>(0, 1, -1)}}), written),
              "its bounds differ along z");
}

TEST(SavedFile, IsNotWrittenOfAModelWhoseFacetsNameNoVertex)
{
    const test::Directory directory;
    const QString target = directory.Path(QStringLiteral("out.stl"));
    const krmodel::Output output = krmodel::ChooseOutput(target, Encoding::Binary);
    try {
        krmodel::SaveModel(output, ModelOf(kFacet, {0, 1, 9}));
        ADD_FAILURE() << "it was written";
    } catch (const krmodel::Failure& failure) {
        EXPECT_EQ(failure.GetCode(), krmodel::ExitCode::WriteFailed);
        EXPECT_EQ(QString::fromUtf8(failure.what()),
                  target + QStringLiteral(": not written, the writer stopped half-way"));
    }
    EXPECT_FALSE(QFile::exists(target));
}

} // namespace
