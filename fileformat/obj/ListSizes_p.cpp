#include "fileformat/obj/ListSizes_p.h"

#include <algorithm>
#include <string_view>

#include <QFile>

#include "core/common/LargePages_p.h"
#include "fileformat/common/BlockReader_p.h"
#include "fileformat/obj/UsualStatements_p.h"

namespace kr::obj {

namespace {

constexpr qint64 kSmallestFile = qint64(4) << 20;
constexpr int kSampleCount = 64;
constexpr std::size_t kSampleSize = 4096;

// A system may refuse to promise very much memory; beyond, the lists grow with what is read.
constexpr double kMostPromised = double(1 << 26);

// Reads what is of the usual kind and steps over all other lines.
void ReadSample(std::string_view lines, Content& content)
{
    const char* position = lines.data();
    const char* const end = position + lines.size();
    while ((position = ReadUsualStatements(position, end, content)) != end)
        position = std::find(position, end, '\n') + 1;
}

// The whole lines of the block at the file's position.
std::string_view WholeLines(BlockReader& source)
{
    const std::string_view bytes = source.NextByte() < 0 ? std::string_view() : source.Buffered();
    const std::size_t first = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
    return bytes.substr(first, std::max(bytes.rfind('\n') + 1, first) - first);
}

template<class T>
void MakeRoom(std::vector<T>& list, std::size_t sampled, double filePerSample)
{
    // Where the file turns from one kind of statement to another is known to within the way between samples.
    const double expected = std::min(double(sampled) * filePerSample, kMostPromised);
    const double margin = expected / 8;
    list.reserve(static_cast<std::size_t>(expected + margin));
    // Large pages only where they will be filled.
    AdviseLargePages(list.data(), static_cast<std::size_t>(expected - margin) * sizeof(T));
}

} // namespace

Content MakeRoomFor(QFile& file)
{
    Content content;
    const qint64 size = file.size();
    if (size < kSmallestFile)
        return content;
    Content sample;
    std::size_t sampledBytes = 1;
    for (int i = 0; i < kSampleCount && file.seek(size / kSampleCount * i); ++i) {
        BlockReader source(file, LineEnds::WithoutCarriageReturns, kSampleSize);
        const std::string_view lines = WholeLines(source);
        ReadSample(lines, sample);
        sampledBytes += lines.size();
    }
    file.seek(0);
    const double filePerSample = double(size) / double(sampledBytes);
    MakeRoom(content.vertices, sample.vertices.size(), filePerSample);
    MakeRoom(content.texCoords, sample.texCoords.size(), filePerSample);
    MakeRoom(content.faces, sample.faces.size(), filePerSample);
    MakeRoom(content.textureFaces, sample.textureFaces.size(), filePerSample);
    return content;
}

} // namespace kr::obj
