#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

class QIODevice;

namespace kr {

/// Gathers output in a large block and writes it in one piece when the block is full, on Flush(), and at the
/// end of its life, also when an exception ends it. Errors of the device are not reported.
class BlockWriter {
public:
    explicit BlockWriter(QIODevice& device);
    ~BlockWriter() { Flush(); }
    BlockWriter(const BlockWriter&) = delete;
    BlockWriter& operator=(const BlockWriter&) = delete;

    /// Room for @p size bytes, at most kLargestPiece, to be filled from the returned position on and then
    /// taken in with Commit().
    char* Reserve(std::size_t size)
    {
        if (static_cast<std::size_t>(m_limit - m_position) < size)
            Flush();
        return m_position;
    }
    /// @param position  behind the last byte that was filled
    void Commit(char* position) { m_position = position; }

    void Append(std::string_view bytes);
    void AppendZeros(std::size_t count);
    void Flush();

    static constexpr std::size_t kLargestPiece = 4096;

private:
    QIODevice& m_device;
    std::unique_ptr<char[]> m_block;
    char* m_position;
    char* m_limit;
};

} // namespace kr
