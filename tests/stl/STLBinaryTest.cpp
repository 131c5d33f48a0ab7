#include "fileformat/stl/STLBinary_p.h"

#include <gtest/gtest.h>

#include "tests/stl/ByteDevices.h"
#include "tests/stl/STLBuilders.h"

namespace {

using test::BinarySTL;
using test::BitsOf;
using test::Bytes;
using test::Point;

} // namespace

TEST(STLBinary, CountsWholeRecords)
{
    using kr::stl::BinaryFacetCount;
    EXPECT_EQ(BinaryFacetCount(84 + 50, 80, 1), 1U);
    EXPECT_EQ(BinaryFacetCount(84 + 500, 80, 10), 10U);
    EXPECT_EQ(BinaryFacetCount(4 + 100, 0, 2), 2U);
    EXPECT_FALSE(BinaryFacetCount(84 + 500, 80, 9));
    EXPECT_FALSE(BinaryFacetCount(84 + 500, 80, 11));
}

TEST(STLBinary, AcceptsSurplusBytesButFor48)
{
    for (int surplus = 0; surplus < 50; ++surplus)
        EXPECT_EQ(kr::stl::BinaryFacetCount(84 + 100 + surplus, 80, 2).has_value(), surplus != 48) << surplus;
    EXPECT_EQ(kr::stl::BinaryFacetCount(84 + 100 + 48, 80, 3), 3U);
}

TEST(STLBinary, RefusesNoFacetAndALoneRecordWithoutItsWord)
{
    EXPECT_FALSE(kr::stl::BinaryFacetCount(84, 80, 0));
    EXPECT_FALSE(kr::stl::BinaryFacetCount(84 + 50, 80, 0));
    EXPECT_FALSE(kr::stl::BinaryFacetCount(84 + 48, 80, 1));
    EXPECT_FALSE(kr::stl::BinaryFacetCount(84 + 48, 80, 0));
    EXPECT_FALSE(kr::stl::BinaryFacetCount(10, 80, 1));
}

TEST(STLBinary, RefusesCountsThatAreNegativeOrCannotBeStitched)
{
    const std::int64_t most = 715'827'882;
    EXPECT_EQ(kr::stl::BinaryFacetCount(84 + 50 * most, 80, static_cast<std::uint32_t>(most)), 715'827'882U);
    EXPECT_FALSE(kr::stl::BinaryFacetCount(84 + 50 * (most + 1), 80, static_cast<std::uint32_t>(most + 1)));
    EXPECT_FALSE(kr::stl::BinaryFacetCount(84 + 50 * 0x80000000LL, 80, 0x80000000U));
    EXPECT_FALSE(kr::stl::BinaryFacetCount(84 + 50 * 0x100000001LL, 80, 1));
}

TEST(STLBinary, KeepsWhatThereIsOfARecordThatIsCutShort)
{
    const QByteArray records = QByteArray(BinarySTL().Facets(2)).mid(84);
    for (int size = 0; size <= records.size(); ++size) {
        Bytes device(records.left(size));
        const auto soup = kr::stl::ReadFacetRecords(device, 2);
        ASSERT_EQ(soup.has_value(), size >= 48) << size;
        if (!soup)
            continue;
        ASSERT_EQ(soup->cornerCount, 6U);
        EXPECT_EQ(soup->normalCount, 2U);
        QByteArray expected = records.mid(12, 36) + records.left(size).mid(62, 36);
        expected.append(72 - expected.size(), '\0');
        EXPECT_EQ(BitsOf(soup->corners.data(), 6), expected) << size;
    }
}

TEST(STLBinary, RefusesAFileWhoseCountCannotBeRead)
{
    class : public test::FailingDevice {
    public:
        using FailingDevice::FailingDevice;
        qint64 size() const override { return 84 + 50; }
        bool seek(qint64 position) override { return QIODevice::seek(position); }
    } device{QByteArray(82, '\0')};
    EXPECT_FALSE(kr::stl::ReadBinary(device, 80));
}

TEST(STLBinary, ReadsMoreRecordsThanABlockHolds)
{
    Bytes device(BinarySTL().Facets(10'000));
    const auto soup = kr::stl::ReadBinary(device, 80);
    ASSERT_TRUE(soup);
    ASSERT_EQ(soup->FacetCount(), 10'000U);
    for (std::size_t i = 0; i < 10'000; ++i)
        ASSERT_EQ(soup->corners[3 * i + 1], Point(static_cast<float>(10 * i + 1), 0, 0));
}
