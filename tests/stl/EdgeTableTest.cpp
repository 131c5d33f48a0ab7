#include "fileformat/stl/EdgeTable_p.h"

#include <vector>

#include <gtest/gtest.h>

#include "core/common/HalfEdgePairing_p.h"
#include "core/math/EigenVecFunc3f.h"
#include "fileformat/stl/CornerNumbers_p.h"
#include "tests/stl/SoupBuilder.h"

namespace {

using kr::stl::BucketCountFor;
using kr::stl::EdgeTable;
using Point = Vector3D<float>;

MeshEigenEdgeInfo Edge(int facet, int edge, const Point& a, const Point& b)
{
    const Eigen::Vector3f start = EigenVecFunc3f::VectorToEigen(a), end = EigenVecFunc3f::VectorToEigen(b);
    MeshEigenEdgeInfo info;
    info.facet = facet;
    info.edge = edge;
    info.init(&start, &end);
    return info;
}

EdgeTable::Partner Offer(EdgeTable& table, const MeshEigenEdgeInfo& edge, int number)
{
    return table.TakePartnerOrInsert(edge, table.BucketOf(edge), number);
}

} // namespace

TEST(EdgeTable, HasAPrimeNumberOfBucketsThatSuffices)
{
    const auto isPrime = [](int n) {
        for (int d = 2; d <= n / d; ++d)
            if (n % d == 0)
                return false;
        return n > 1;
    };
    for (const std::size_t wanted : {0u, 53u, 54u, 98317u, 98318u, 1000000u, 100663320u, 1610612741u}) {
        EXPECT_GE(std::size_t(BucketCountFor(wanted)), wanted);
        EXPECT_TRUE(isPrime(BucketCountFor(wanted))) << wanted;
    }
    EXPECT_EQ(BucketCountFor(98317), 98317);
    EXPECT_EQ(BucketCountFor(98318), 196613);
    EXPECT_EQ(BucketCountFor(std::size_t(1) << 40), 1610612741) << "the last one serves all larger tables";
}

TEST(EdgeTable, GivesTheLatestPartnerOnceAndItsDirection)
{
    EdgeTable table(8);
    const Point a(0, 0, 0), b(1, 0, 0);
    EXPECT_EQ(Offer(table, Edge(0, 0, a, b), 10).number, -1);
    EXPECT_EQ(Offer(table, Edge(0, 1, a, b), 11).number, -1) << "of the same facet";
    const EdgeTable::Partner first = Offer(table, Edge(1, 0, b, a), 12);
    EXPECT_EQ(first.number, 11);
    EXPECT_TRUE(first.isOpposite);
    const EdgeTable::Partner second = Offer(table, Edge(2, 0, a, b), 13);
    EXPECT_EQ(second.number, 10);
    EXPECT_FALSE(second.isOpposite);
    EXPECT_EQ(Offer(table, Edge(3, 0, a, b), 14).number, -1) << "both are taken";
}

TEST(EdgeTable, TakesMoreEdgesThanItWasMadeFor)
{
    EdgeTable table(1);
    for (int i = 0; i < 5000; ++i)
        EXPECT_EQ(Offer(table, Edge(i, 0, {float(i), 0, 0}, {float(i), 1, 0}), i).number, -1);
    for (int i = 0; i < 5000; ++i)
        EXPECT_EQ(Offer(table, Edge(i + 5000, 0, {float(i), 1, 0}, {float(i), 0, 0}), i).number, i);
}

// The fast road pairs numbers of positions, the table pairs coordinates: one rule, two ways.
TEST(EdgeTable, LinksTheSameEdgesAsPairingByPositions)
{
    Random random(5);
    for (int i = 0; i < 3000; ++i) {
        const SoupCorners soup = RandomSoup(random);
        const std::size_t facetCount = soup.size() / 3;
        std::vector<TriangleFace> numbers(facetCount);
        const auto positions = kr::stl::NumberPositions(soup.data(), facetCount, numbers.data());
        const kr::HalfEdgeLinks links = kr::PairHalfEdges(numbers.data(), facetCount, positions.count);

        EdgeTable table(3 * facetCount);
        std::vector<kr::Mate> mates(3 * facetCount);
        for (int h = 0; h < int(mates.size()); ++h) {
            const Point& start = soup[std::size_t(h)];
            const Point& end = soup[std::size_t(kr::NextInFacet(h))];
            const EdgeTable::Partner partner = Offer(table, Edge(h / 3, h % 3, start, end), h);
            if (partner.number < 0)
                continue;
            const auto mateOf = [&](int other) {
                return partner.isOpposite ? kr::Mate::Opposite(other) : kr::Mate::SameWay(other);
            };
            mates[std::size_t(h)] = mateOf(partner.number);
            mates[std::size_t(partner.number)] = mateOf(h);
        }
        ASSERT_TRUE(std::equal(mates.begin(), mates.end(), links.mates.begin())) << "soup " << i;
    }
}
