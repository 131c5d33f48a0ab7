#include "fileformat/3mf/DocumentDevice_p.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "core/common/LargePages_p.h"

namespace kr::package3mf {

DocumentDevice::DocumentDevice(qint64 expected, int largest)
    : m_position(m_bytes.data()), m_limit(m_position), m_largest(largest)
{
    open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    Grow(std::min<qint64>(expected, largest));
}

QByteArray DocumentDevice::Take()
{
    m_bytes.resize(Size());
    QByteArray document = std::exchange(m_bytes, QByteArray());
    m_position = m_limit = m_bytes.data();
    return document;
}

qint64 DocumentDevice::readData(char*, qint64)
{
    return -1;
}

qint64 DocumentDevice::writeData(const char* data, qint64 size)
{
    char* const position = Reserve(size);
    std::memcpy(position, data, static_cast<std::size_t>(size));
    Commit(position + size);
    return size;
}

// Doubles the room. Memory that is not touched costs nothing.
void DocumentDevice::Grow(qint64 size)
{
    const qint64 used = Size();
    if (size > m_largest - used)
        throw std::bad_alloc();
    const qint64 room = std::clamp(2 * used, used + size, qint64(m_largest));
    m_bytes.resize(static_cast<int>(room));
    AdviseLargePages(m_bytes.data(), static_cast<std::size_t>(room));
    m_position = m_bytes.data() + used;
    m_limit = m_bytes.data() + room;
}

} // namespace kr::package3mf
