#include "fileformat/path/PathSource_p.h"

#include <algorithm>

#include <QFile>

namespace kr::path {

namespace {

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "numbers are copied as they are stored");

} // namespace

PathSource::PathSource(QFile& file)
    : m_reader(file, LineEnds::AsStored), m_left(static_cast<std::size_t>(std::max<qint64>(file.size(), 0)))
{}

// The file may also have become shorter since its size was asked for.
bool PathSource::Read(void* to, std::size_t size)
{
    if (size > m_left)
        return false;
    m_left -= size;
    return m_reader.Read(static_cast<char*>(to), size);
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

} // namespace kr::path
