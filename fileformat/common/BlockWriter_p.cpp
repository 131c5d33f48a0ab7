#include "fileformat/common/BlockWriter_p.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include <QIODevice>

namespace kr {

namespace {

constexpr std::size_t kBlockSize = std::size_t(256) * 1024;

} // namespace

BlockWriter::BlockWriter(QIODevice& device)
    : m_device(device),
      m_block(new char[kBlockSize]),
      m_position(m_block.get()),
      m_limit(m_block.get() + kBlockSize)
{}

void BlockWriter::Append(std::string_view bytes)
{
    assert(bytes.size() <= kLargestPiece);
    char* const begin = Reserve(bytes.size());
    std::memcpy(begin, bytes.data(), bytes.size());
    Commit(begin + bytes.size());
}

void BlockWriter::AppendZeros(std::size_t count)
{
    while (count > 0) {
        const std::size_t size = std::min(count, kLargestPiece);
        char* const begin = Reserve(size);
        std::memset(begin, 0, size);
        Commit(begin + size);
        count -= size;
    }
}

void BlockWriter::Flush()
{
    if (m_position != m_block.get())
        m_device.write(m_block.get(), m_position - m_block.get());
    m_position = m_block.get();
}

} // namespace kr
