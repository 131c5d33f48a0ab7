#pragma once

#include <cstddef>
#include <optional>

#include <QtGlobal>

#include "fileformat/common/BlockReader_p.h"

class QFile;

namespace kr::path {

/// The bytes and counts of an open path file. Keeps account of the bytes that are left, which counts are
/// compared with.
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
    BlockReader m_reader;
    std::size_t m_left;
};

} // namespace kr::path
