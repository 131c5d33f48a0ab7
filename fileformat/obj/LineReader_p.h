#pragma once

#include <string>
#include <string_view>

#include "fileformat/common/BlockReader_p.h"

namespace kr::obj {

/// A joined line may have so many bytes; a longer one ends the reading.
constexpr std::size_t kLongestLine = 0xFFFFF;
static_assert(BlockReader::kUsualBlockSize <= kLongestLine, "a line within a block is never too long");

/// The logical lines of an OBJ or MTL file, as OBJFile describes them, before they are decoded.
class LineReader {
public:
    explicit LineReader(QIODevice& device) : m_source(device, LineEnds::WithoutCarriageReturns) {}

    /// Takes the next line.
    /// @param line  without its end; holds until the next call. May contain any byte but a line feed and NUL
    /// @return false at the end of the file and for a line that is too long, with nothing more to be read
    bool Next(std::string_view& line);

    /// The physical lines that are at hand as a whole, each with its line feed; may be empty. They are
    /// logical lines as long as they hold no backslash and no NUL. Behind them kReadableBehind bytes can be
    /// read.
    std::string_view WholeLines();
    static constexpr std::size_t kReadableBehind = BlockReader::kReadableBehind;
    /// Steps behind a line feed of WholeLines().
    void SkipTo(const char* position) { m_source.SkipTo(position); }

private:
    void LookAhead();
    bool Assemble();

    BlockReader m_source;
    std::string m_line;
    // The nearest ones ahead in the block or its end. Each is looked for again only when it is passed: a
    // block may hold very many lines and none of these.
    const char* m_newLine = nullptr;
    const char* m_backslash = nullptr;
    const char* m_nul = nullptr;
    std::size_t m_searchedBlock = 0;
    // Behind the last line feed of the block, found once for the same reason.
    const char* m_wholeLinesEnd = nullptr;
    std::size_t m_wholeLinesBlock = 0;
};

} // namespace kr::obj
