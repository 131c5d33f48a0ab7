#include "fileformat/stl/STLBinary_p.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include <QIODevice>
#include <QtEndian>

#include "core/common/HalfEdgePairing_p.h"

namespace kr::stl {

namespace {

// binary file, little-endian
//   header   as many bytes as the caller says, 80 in ordinary files, passed over
//   count    uint32
//   facets   count x 50 bytes:
//     normal   3 x float32   passed over, computed anew from the corners
//     corners  9 x float32
//     word     uint16        passed over
constexpr int kCountSize = 4;
constexpr int kNormalSize = 12;
constexpr int kCornersSize = 36;
constexpr int kRecordSize = 50;
constexpr int kWordSize = 2;
constexpr int kLargestHeader = 1024;
// About 64 KiB: large enough to make the calls cheap, small enough to be copied from the cache.
constexpr qint64 kRecordsPerBlock = 1300;

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "records are copied as they are stored");

bool SkipHeader(QIODevice& device, int headerSize)
{
    return headerSize >= 0 && headerSize <= kLargestHeader &&
           qint64(headerSize) + kCountSize <= device.size() && device.seek(headerSize);
}

std::optional<std::uint32_t> ReadCount(QIODevice& device)
{
    char bytes[kCountSize];
    if (device.read(bytes, kCountSize) != kCountSize)
        return std::nullopt;
    return qFromLittleEndian<quint32>(bytes);
}

// Copies the corners out of `size` bytes of records; of the last one there may be a part only.
// @return the facets whose corners were all there
qint64 CopyCorners(const char* records, qint64 size, Vector3D<float>* corners)
{
    const qint64 wholeRecords = size / kRecordSize;
    for (qint64 i = 0; i < wholeRecords; ++i)
        std::memcpy(static_cast<void*>(corners + 3 * i), records + i * kRecordSize + kNormalSize,
                    kCornersSize);
    const qint64 rest = size - wholeRecords * kRecordSize;
    if (rest <= kNormalSize)
        return wholeRecords;
    const qint64 cornerBytes = std::min<qint64>(rest - kNormalSize, kCornersSize);
    std::memcpy(static_cast<void*>(corners + 3 * wholeRecords),
                records + wholeRecords * kRecordSize + kNormalSize, static_cast<std::size_t>(cornerBytes));
    return wholeRecords + (cornerBytes == kCornersSize ? 1 : 0);
}

} // namespace

std::optional<std::size_t> BinaryFacetCount(std::int64_t fileSize, int headerSize, std::uint32_t claimedCount)
{
    const std::int64_t recordBytes = fileSize - headerSize - kCountSize;
    std::int64_t count = recordBytes / kRecordSize;
    if (count < 1)
        return std::nullopt;
    if (recordBytes == (count + 1) * kRecordSize - kWordSize)
        ++count;
    if (count != std::int64_t(claimedCount) || count > std::int64_t(kMaxFacets))
        return std::nullopt;
    return static_cast<std::size_t>(count);
}

std::optional<TriangleSoup> ReadBinary(QIODevice& device, int headerSize)
{
    if (!SkipHeader(device, headerSize))
        return std::nullopt;
    const std::optional<std::uint32_t> claimedCount = ReadCount(device);
    if (!claimedCount)
        return std::nullopt;
    const std::optional<std::size_t> facetCount = BinaryFacetCount(device.size(), headerSize, *claimedCount);
    if (!facetCount)
        return std::nullopt;
    return ReadFacetRecords(device, *facetCount);
}

std::optional<TriangleSoup> ReadFacetRecords(QIODevice& device, std::size_t facetCount)
{
    TriangleSoup soup;
    soup.corners = Scratch<Vector3D<float>>(facetCount * 3);
    soup.cornerCount = facetCount * 3;
    soup.normalCount = facetCount;
    std::vector<char> block(static_cast<std::size_t>(kRecordsPerBlock * kRecordSize));
    const auto count = static_cast<qint64>(facetCount);
    qint64 facet = 0;
    for (bool isComplete = true; facet < count && isComplete;) {
        const qint64 wanted = std::min(count - facet, kRecordsPerBlock) * kRecordSize;
        const qint64 size = std::max<qint64>(device.read(block.data(), wanted), 0);
        isComplete = size == wanted;
        facet += CopyCorners(block.data(), size, soup.corners.data() + 3 * facet);
    }
    if (facet == 0)
        return std::nullopt;
    return soup;
}

} // namespace kr::stl
