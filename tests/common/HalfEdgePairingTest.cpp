#include "core/common/HalfEdgePairing_p.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using kr::HalfEdge;
using kr::Mate;

struct PlainLinks {
    std::vector<Mate> mates;
    std::size_t unlinkedCount = 0;
    std::size_t sameWayCount = 0;
};

// All earlier half-edges are looked through, the latest first.
PlainLinks PairPlainly(const std::vector<TriangleFace>& faces)
{
    PlainLinks links;
    links.mates.resize(3 * faces.size());
    const auto from = [&](int h) { return faces[std::size_t(h / 3)][h % 3]; };
    const auto to = [&](int h) { return faces[std::size_t(h / 3)][(h + 1) % 3]; };
    for (int h = 0; h < int(links.mates.size()); ++h)
        for (int g = h - 1; g >= 0; --g) {
            const bool isOpposite = from(h) == to(g) && to(h) == from(g);
            const bool isSameWay = from(h) == from(g) && to(h) == to(g);
            if (links.mates[std::size_t(g)].IsLinked() || h / 3 == g / 3 || !(isOpposite || isSameWay))
                continue;
            links.mates[std::size_t(h)] = isOpposite ? Mate::Opposite(g) : Mate::SameWay(g);
            links.mates[std::size_t(g)] = isOpposite ? Mate::Opposite(h) : Mate::SameWay(h);
            links.sameWayCount += !isOpposite;
            break;
        }
    links.unlinkedCount = std::size_t(
        std::count_if(links.mates.begin(), links.mates.end(), [](Mate mate) { return !mate.IsLinked(); }));
    return links;
}

void ExpectPairedAsPlainly(const std::vector<TriangleFace>& faces, std::size_t vertexCount)
{
    const kr::HalfEdgeLinks links = kr::PairHalfEdges(faces.data(), faces.size(), vertexCount);
    const PlainLinks plain = PairPlainly(faces);
    ASSERT_EQ(links.mates.size(), plain.mates.size());
    EXPECT_TRUE(std::equal(plain.mates.begin(), plain.mates.end(), links.mates.begin()));
    EXPECT_EQ(links.unlinkedCount, plain.unlinkedCount);
    EXPECT_EQ(links.sameWayCount, plain.sameWayCount);
}

std::vector<TriangleFace> RandomFaces(std::mt19937& random, int faceCount, int vertexCount)
{
    std::uniform_int_distribution<int> vertex(0, vertexCount - 1);
    std::vector<TriangleFace> faces;
    for (int i = 0; i < faceCount; ++i)
        faces.emplace_back(vertex(random), vertex(random), vertex(random));
    return faces;
}

} // namespace

TEST(HalfEdgePairing, MateTellsPartnerAndDirection)
{
    EXPECT_FALSE(Mate().IsLinked());
    EXPECT_EQ(Mate().Partner(), -1);
    EXPECT_EQ(Mate().Turned(), Mate());
    for (const HalfEdge partner : {0, 1, 0x7ffffffd}) {
        EXPECT_EQ(Mate::Opposite(partner).Partner(), partner);
        EXPECT_EQ(Mate::SameWay(partner).Partner(), partner);
        EXPECT_FALSE(Mate::Opposite(partner).RunsSameWay());
        EXPECT_TRUE(Mate::SameWay(partner).RunsSameWay());
        EXPECT_EQ(Mate::Opposite(partner).Turned(), Mate::SameWay(partner));
        EXPECT_EQ(Mate::SameWay(partner).Turned(), Mate::Opposite(partner));
    }
}

TEST(HalfEdgePairing, StepsWithinAFacet)
{
    for (HalfEdge h = 0; h < 9; ++h) {
        EXPECT_EQ(kr::NextInFacet(h) / 3, h / 3);
        EXPECT_EQ(kr::PreviousInFacet(kr::NextInFacet(h)), h);
        EXPECT_EQ(kr::NextInFacet(h) % 3, (h + 1) % 3);
    }
}

TEST(HalfEdgePairing, PairsNothingInAnEmptyMesh)
{
    const kr::HalfEdgeLinks links = kr::PairHalfEdges(nullptr, 0, 0);
    EXPECT_EQ(links.unlinkedCount, 0u);
    EXPECT_EQ(links.sameWayCount, 0u);
    EXPECT_FALSE(links.hasLoops);
}

TEST(HalfEdgePairing, TakesTheLatestUnpairedEdge)
{
    const std::vector<TriangleFace> faces{{0, 1, 2}, {1, 0, 3}, {0, 1, 4}, {1, 0, 5}};
    const kr::HalfEdgeLinks links = kr::PairHalfEdges(faces.data(), faces.size(), 6);
    EXPECT_EQ(links.mates[0], Mate::Opposite(3));
    EXPECT_EQ(links.mates[6], Mate::Opposite(9));
}

TEST(HalfEdgePairing, NeverPairsAFacetWithItself)
{
    const std::vector<TriangleFace> faces{{0, 1, 0}, {0, 1, 2}};
    const kr::HalfEdgeLinks links = kr::PairHalfEdges(faces.data(), faces.size(), 3);
    EXPECT_TRUE(links.hasLoops);
    EXPECT_EQ(links.mates[3], Mate::Opposite(1)) << "the later of the two that match";
    EXPECT_FALSE(links.mates[0].IsLinked());
}

TEST(HalfEdgePairing, PairsRandomFacesAsAPlainSearchDoes)
{
    std::mt19937 random(1);
    for (int i = 0; i < 3000; ++i) {
        const int vertexCount = 1 + int(random() % 12);
        ExpectPairedAsPlainly(RandomFaces(random, int(random() % 40), vertexCount), std::size_t(vertexCount));
    }
}

TEST(HalfEdgePairing, PairsAcrossManyRangesOfVertices)
{
    std::mt19937 random(2);
    std::vector<TriangleFace> faces;
    for (int i = 0; i < 1200; ++i) {
        const int a = int(random() % 5000), b = (a + 700) % 5000, c = (a + 1400) % 5000;
        faces.emplace_back(a, b, c);
        faces.emplace_back(b, a, int(random() % 5000));
    }
    ExpectPairedAsPlainly(faces, 5000);
}

// Lists of thousands of unpaired edges at one vertex are given up for sorting; the result must not show it.
TEST(HalfEdgePairing, PairsTheEdgesOfAHubAsAPlainSearchDoes)
{
    std::mt19937 random(3);
    std::vector<TriangleFace> faces;
    for (int i = 1; i <= 1500; ++i)
        faces.emplace_back(0, i, i + 1);
    for (int i = 0; i < 200; ++i)
        faces.emplace_back(int(random() % 1500), 0, int(random() % 3));
    std::shuffle(faces.begin(), faces.end(), random);
    ExpectPairedAsPlainly(faces, 1502);
}
