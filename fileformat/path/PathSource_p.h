#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include <QtGlobal>

class QFile;

namespace kr::path {

/// Byte source over an open path file: small pieces come from a block, large ones straight from the file.
/// Keeps account of the bytes that are left, which counts are compared with.
class PathSource {
public:
    explicit PathSource(QFile& file);

    /// @return false when the file ends before @p size bytes, or a read fails
    [[nodiscard]] bool Read(void* to, std::size_t size);

    [[nodiscard]] std::optional<qint32> Integer();

    /// The next count, 0 for a negative one. Nothing when the file ends, or has too few bytes left for so
    /// many items of @p leastItemSize bytes: what is believed is then in proportion to the file.
    [[nodiscard]] std::optional<std::size_t> Count(std::size_t leastItemSize);

private:
    std::size_t TakeFromBlock(char* to, std::size_t size);
    bool ReadBlock();

    QFile& m_file;
    std::size_t m_left;
    std::unique_ptr<char[]> m_block;
    const char* m_position;
    const char* m_limit;
};

} // namespace kr::path
