#include "apps/krmodel/StlFormat.h"

#include <gtest/gtest.h>

#include "tests/common/Directory.h"

namespace {

using krmodel::Encoding;
using krmodel::Facet;
using krmodel::Model;
namespace stl = krmodel::stl;

constexpr char kCorners[] = "vertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n";

Model OneFacet()
{
    Model model;
    model.meshes.push_back(std::make_unique<Mesh>(0.03F));
    model.meshes[0]->AddVertexAndFaces({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}});
    return model;
}

/// A file that each test may write anew.
class StlFormat : public ::testing::Test {
protected:
    QString Write(const QByteArray& bytes) const { return m_directory.Write(bytes); }
    QString Missing() const { return m_directory.Path(QStringLiteral("missing.stl")); }

    /// The facets that are visited before the file ends or goes wrong.
    static int CountVisited(const QString& fileName, Encoding encoding, bool isGood)
    {
        int count = 0;
        EXPECT_EQ(stl::VisitFacets(fileName, encoding, [&](const Facet&) { ++count; }), isGood);
        return count;
    }

private:
    test::Directory m_directory;
};

TEST_F(StlFormat, ATextShorterThanTheHeadOfABinaryFileIsAText)
{
    const QByteArray text = QByteArray("solid\n") + kCorners;
    ASSERT_LT(text.size(), 84);
    EXPECT_EQ(stl::Variant(Write(text)), QStringLiteral("text"));
}

TEST_F(StlFormat, ATextWithASmallNumberWhereBinaryFilesCountIsAText)
{
    const QByteArray text = "solid" + QByteArray(75, ' ') + QByteArray(4, '\0') + '\n' + kCorners + kCorners;
    EXPECT_EQ(stl::Variant(Write(text)), QStringLiteral("text"));
}

TEST_F(StlFormat, AFileThatIsGoneIsNotComplete)
{
    EXPECT_FALSE(stl::IsComplete(Missing(), OneFacet(), Encoding::Text));
    EXPECT_FALSE(stl::IsComplete(Missing(), OneFacet(), Encoding::Binary));
    EXPECT_EQ(CountVisited(Missing(), Encoding::Text, false), 0);
    EXPECT_EQ(CountVisited(Missing(), Encoding::Binary, false), 0);
    EXPECT_TRUE(stl::Scan(Missing(), OneFacet()).empty());
}

TEST_F(StlFormat, ATextIsCompleteWithItsLastLine)
{
    EXPECT_TRUE(stl::IsComplete(Write("solid model\nendsolid model\n"), OneFacet(), Encoding::Text));
    EXPECT_FALSE(stl::IsComplete(Write("solid model\nendsolid model"), OneFacet(), Encoding::Text));
    EXPECT_FALSE(stl::IsComplete(Write("end"), OneFacet(), Encoding::Text));
}

TEST_F(StlFormat, FacetsOfATextHaveThreeCornersEach)
{
    const QByteArray loop = kCorners + QByteArray("endloop\n");
    EXPECT_EQ(CountVisited(Write(loop + loop), Encoding::Text, true), 2);
    EXPECT_EQ(CountVisited(Write(loop + "vertex 0 0 0\n" + loop), Encoding::Text, false), 1);
    EXPECT_EQ(CountVisited(Write(loop + "vertex 0 0 0\nendloop\n"), Encoding::Text, false), 1);
    EXPECT_EQ(CountVisited(Write(loop + "vertex 0 0 0\n"), Encoding::Text, false), 1);
    EXPECT_EQ(CountVisited(Write(loop + "vertex 0 0 x\n"), Encoding::Text, true), 1);
}

TEST_F(StlFormat, FacetsOfABinaryFileAreWholeRecords)
{
    EXPECT_EQ(CountVisited(Write(QByteArray(84 + 2 * 50, '\0')), Encoding::Binary, true), 2);
    EXPECT_EQ(CountVisited(Write(QByteArray(84 + 2 * 50 - 1, '\0')), Encoding::Binary, false), 1);
    EXPECT_EQ(CountVisited(Write(QByteArray(84, '\0')), Encoding::Binary, true), 0);
}

TEST_F(StlFormat, WhatDeclaresNoFacetIsNotTakenForDamaged)
{
    const auto codeOf = [&](const QByteArray& bytes) {
        Model model;
        const auto refusal = stl::Load(Write(bytes), {}, model);
        return refusal ? refusal->code : krmodel::ExitCode::Done;
    };
    EXPECT_EQ(codeOf(QByteArray(84, '\0')), krmodel::ExitCode::Empty);
    EXPECT_EQ(codeOf(QByteArray(83, '\0') + '\1'), krmodel::ExitCode::NotReadable);
    EXPECT_EQ(codeOf("solid a\nendsolid a\n"), krmodel::ExitCode::Empty);
    EXPECT_EQ(codeOf("solid a\nvertex\nendsolid a\n"), krmodel::ExitCode::NotReadable);
    EXPECT_EQ(codeOf("solid a\n"), krmodel::ExitCode::NotReadable);
    EXPECT_EQ(codeOf("solid a\nendsolid a\n" + QByteArray(5000, ' ')), krmodel::ExitCode::NotReadable);
}

} // namespace
