#include "fileformat/common/BlockReader_p.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include <QIODevice>

namespace kr {

namespace {

// Most blocks hold none, which a search in memory tells at many bytes a cycle.
char* DropCarriageReturns(char* begin, char* end)
{
    void* const first = std::memchr(begin, '\r', static_cast<std::size_t>(end - begin));
    return first ? std::remove(static_cast<char*>(first), end, '\r') : end;
}

// What has no size may still have bytes.
std::size_t SuitableBlockSize(const QIODevice& device)
{
    constexpr qint64 kSmallest = 4096;
    return static_cast<std::size_t>(
        std::clamp<qint64>(device.size(), kSmallest, BlockReader::kUsualBlockSize));
}

} // namespace

BlockReader::BlockReader(QIODevice& device, LineEnds lineEnds)
    : BlockReader(device, lineEnds, SuitableBlockSize(device))
{}

BlockReader::BlockReader(QIODevice& device, LineEnds lineEnds, std::size_t blockSize)
    : m_device(device),
      m_lineEnds(lineEnds),
      m_blockSize(blockSize),
      m_block(new char[blockSize + kReadableBehind]()),
      m_position(m_block.get()),
      m_limit(m_block.get())
{}

void BlockReader::ReadBlock()
{
    char* const begin = m_block.get();
    char* limit = begin;
    // A block of carriage returns alone leaves nothing, and is not the end.
    while (limit == begin && m_ending == 0) {
        const qint64 count = m_device.read(begin, static_cast<qint64>(m_blockSize));
        if (count <= 0)
            m_ending = count == 0 ? kEndOfInput : kReadFailed;
        else
            limit = begin + count;
        if (m_lineEnds == LineEnds::WithoutCarriageReturns)
            limit = DropCarriageReturns(begin, limit);
    }
    m_position = begin;
    m_limit = limit;
    ++m_blockNumber;
}

bool BlockReader::ReadAcrossBlocks(char* to, std::size_t size)
{
    assert(m_lineEnds == LineEnds::AsStored);
    while (size > 0) {
        const std::size_t count = ReadSome(to, size);
        if (count == 0)
            return false;
        to += count;
        size -= count;
    }
    return true;
}

// At least a byte, unless there is none.
std::size_t BlockReader::ReadSome(char* to, std::size_t size)
{
    if (m_position == m_limit) {
        if (size >= m_blockSize)
            return static_cast<std::size_t>(
                std::max<qint64>(m_device.read(to, static_cast<qint64>(size)), 0));
        ReadBlock();
    }
    const std::size_t count = std::min(size, Buffered().size());
    std::memcpy(to, m_position, count);
    m_position += count;
    return count;
}

int SingleByteReader::NextByte()
{
    if (m_device.atEnd())
        return kEndOfInput;
    char byte = 0;
    const qint64 count = m_device.read(&byte, 1);
    if (count == 1)
        return static_cast<unsigned char>(byte);
    // In text mode the last bytes may all be carriage returns: nothing is left although the end was not
    // reached.
    return count == 0 ? kEndOfInput : kReadFailed;
}

} // namespace kr
