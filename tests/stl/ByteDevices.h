#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include <QBuffer>
#include <QByteArray>

#include "core/math/Vector3D.h"

namespace test {

/// The smallest ones put a border everywhere, the last one holds every sample whole.
inline constexpr std::size_t kBlockSizes[] = {1, 2, 7, 64, 1000, 65536};

/// An open device over bytes in memory.
class Bytes {
public:
    explicit Bytes(const QByteArray& bytes) : m_bytes(bytes)
    {
        m_buffer.setBuffer(&m_bytes);
        m_buffer.open(QIODevice::ReadOnly);
    }
    operator QIODevice&() { return m_buffer; }

private:
    QByteArray m_bytes;
    QBuffer m_buffer;
};

/// Gives a number of bytes and then fails.
class FailingDevice : public QIODevice {
public:
    explicit FailingDevice(const QByteArray& bytes) : m_bytes(bytes) { open(ReadOnly | Unbuffered); }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        if (m_bytes.isEmpty())
            return -1;
        const int size = static_cast<int>(std::min<qint64>(maxSize, m_bytes.size()));
        std::memcpy(data, m_bytes.constData(), static_cast<std::size_t>(size));
        m_bytes.remove(0, size);
        return size;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    QByteArray m_bytes;
};

/// The bits, so that a NaN equals itself and -0 is not 0.
inline QByteArray BitsOf(const Vector3D<float>* points, std::size_t count)
{
    return {reinterpret_cast<const char*>(points), static_cast<int>(count * sizeof(Vector3D<float>))};
}

} // namespace test
