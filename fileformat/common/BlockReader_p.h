#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

class QIODevice;

namespace kr {

// What a byte source gives instead of a byte, which is 0..255.
constexpr int kEndOfInput = -1;
constexpr int kReadFailed = -2;

enum class LineEnds {
    AsStored,
    /// Every carriage return is dropped, wherever it stands: what reading a QFile in text mode does.
    WithoutCarriageReturns,
};

/// Byte source over an open device, from its position on, that reads large blocks and lends them out.
/// Knows no format. The device stands behind the latest block, not behind the latest byte.
class BlockReader {
public:
    static constexpr std::size_t kUsualBlockSize = std::size_t(128) * 1024;
    /// Behind what Buffered() lends as many bytes can be read; they mean nothing.
    static constexpr std::size_t kReadableBehind = 16;

    /// With blocks of the usual size, or of the device's if that is smaller: small files are read often.
    BlockReader(QIODevice& device, LineEnds lineEnds);
    BlockReader(QIODevice& device, LineEnds lineEnds, std::size_t blockSize);

    /// The next byte, kEndOfInput or kReadFailed; the latter two are final.
    int NextByte()
    {
        if (m_position == m_limit)
            ReadBlock();
        return m_position == m_limit ? m_ending : static_cast<unsigned char>(*m_position++);
    }

    /// Copies the next @p size bytes as they are stored; in large pieces they come straight from the device.
    /// @return false when the input ends before, or a read fails
    [[nodiscard]] bool Read(char* to, std::size_t size)
    {
        if (size > Buffered().size())
            return ReadAcrossBlocks(to, size);
        std::memcpy(to, m_position, size);
        m_position += size;
        return true;
    }

    /// The bytes at hand, never waiting for more; empty at the end of a block.
    std::string_view Buffered() const { return {m_position, static_cast<std::size_t>(m_limit - m_position)}; }
    /// Steps to @p position within, or to the end of, what Buffered() lends.
    void SkipTo(const char* position) { m_position = position; }
    /// Counts the blocks; what was lent holds as long as it stays the same.
    std::size_t BlockNumber() const { return m_blockNumber; }

private:
    void ReadBlock();
    bool ReadAcrossBlocks(char* to, std::size_t size);
    std::size_t ReadSome(char* to, std::size_t size);

    QIODevice& m_device;
    LineEnds m_lineEnds;
    std::size_t m_blockSize;
    std::unique_ptr<char[]> m_block;
    const char* m_position;
    const char* m_limit;
    std::size_t m_blockNumber = 0;
    int m_ending = 0;
};

/// Byte source that takes single bytes from a device, which stands behind the latest one.
class SingleByteReader {
public:
    explicit SingleByteReader(QIODevice& device) : m_device(device) {}
    int NextByte();

private:
    QIODevice& m_device;
};

} // namespace kr
