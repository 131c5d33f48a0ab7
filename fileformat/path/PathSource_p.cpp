#include "fileformat/path/PathSource_p.h"

#include <algorithm>
#include <cstring>

#include <QFile>

namespace kr::path {

namespace {

constexpr std::size_t kBlockSize = std::size_t(64) * 1024;

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "numbers are copied as they are stored");

} // namespace

PathSource::PathSource(QFile& file)
    : m_file(file),
      m_left(static_cast<std::size_t>(std::max<qint64>(file.size(), 0))),
      m_block(new char[kBlockSize]),
      m_position(m_block.get()),
      m_limit(m_block.get())
{}

bool PathSource::Read(void* to, std::size_t size)
{
    if (size > m_left)
        return false;
    m_left -= size;
    char* position = static_cast<char*>(to);
    for (std::size_t missing = size; missing > 0;) {
        const std::size_t taken = TakeFromBlock(position, missing);
        position += taken;
        missing -= taken;
        if (missing >= kBlockSize)
            return m_file.read(position, static_cast<qint64>(missing)) == static_cast<qint64>(missing);
        if (missing > 0 && !ReadBlock())
            return false;
    }
    return true;
}

std::optional<qint32> PathSource::Integer()
{
    qint32 value = 0;
    if (!Read(&value, sizeof value))
        return std::nullopt;
    return value;
}

std::optional<std::size_t> PathSource::Count(std::size_t leastItemSize)
{
    const std::optional<qint32> stored = Integer();
    if (!stored)
        return std::nullopt;
    const auto count = static_cast<std::size_t>(std::max(*stored, 0));
    if (count > m_left / leastItemSize)
        return std::nullopt;
    return count;
}

std::size_t PathSource::TakeFromBlock(char* to, std::size_t size)
{
    const std::size_t taken = std::min(size, static_cast<std::size_t>(m_limit - m_position));
    std::memcpy(to, m_position, taken);
    m_position += taken;
    return taken;
}

// False when nothing was read: the file has become shorter since its size was asked for.
bool PathSource::ReadBlock()
{
    const qint64 size = m_file.read(m_block.get(), static_cast<qint64>(kBlockSize));
    m_position = m_block.get();
    m_limit = m_position + std::max<qint64>(size, 0);
    return size > 0;
}

} // namespace kr::path
