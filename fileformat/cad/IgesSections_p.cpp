#include "fileformat/cad/IgesSections_p.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "fileformat/common/BlockReader_p.h"

namespace kr::cad {

namespace {

// line, 80 columns; what stands behind them means nothing
//   1..72   content
//   73      letter of the section: start, global, directory, parameters, terminate
//   74..80  number of the line within the section
// terminate record, columns 1..32: a letter and 7 columns of number for each section before it
//   S0000001G0000004D0000098P0000049
constexpr std::size_t kColumns = 80;
constexpr std::size_t kLetterColumn = 72;
constexpr std::size_t kFieldColumns = 8;
constexpr std::string_view kSections = "SGDPT";
constexpr std::size_t kTerminate = 4;

using LineCounts = std::array<std::size_t, kTerminate>;

bool IsLineEnd(int byte)
{
    return byte == '\n' || byte == '\r';
}

bool HoldsLineEnd(std::string_view bytes)
{
    return std::count_if(bytes.begin(), bytes.end(), IsLineEnd) > 0;
}

class LineReader {
public:
    explicit LineReader(QIODevice& file) : m_source(file, LineEnds::AsStored), m_next(m_source.NextByte())
    {
        m_hasLineEnds = HoldsLineEnd(m_source.Buffered().substr(0, 2 * kColumns));
    }

    /// The columns of the next line, blanks behind it; nothing at the end of the file. They hold until the
    /// next call.
    std::string_view Take()
    {
        if (m_next < 0)
            return {};
        if (const std::string_view line = TakeUsualLine(); !line.empty())
            return line;
        m_line.fill(' ');
        std::size_t column = 0;
        for (; m_next >= 0 && !IsLineEnd(m_next) && !IsFull(column); ++column) {
            if (column < kColumns)
                m_line[column] = char(m_next);
            m_next = m_source.NextByte();
        }
        if (!IsFull(column))
            m_next = m_source.NextByte();
        return {m_line.data(), kColumns};
    }

private:
    // As nearly all are: the columns and a line feed, all at hand, so that nothing is copied.
    std::string_view TakeUsualLine()
    {
        const std::string_view behind = m_source.Buffered();
        if (behind.size() <= kColumns || behind[kColumns - 1] != '\n')
            return {};
        const std::string_view line(behind.data() - 1, kColumns); // from m_next on
        if (HoldsLineEnd(line))
            return {};
        m_source.SkipTo(behind.data() + kColumns);
        m_next = m_source.NextByte();
        return line;
    }

    bool IsFull(std::size_t columns) const { return !m_hasLineEnds && columns == kColumns; }

    BlockReader m_source;
    int m_next; // taken from the source already
    bool m_hasLineEnds;
    std::array<char, kColumns> m_line;
};

// The number in these columns, blanks around it; nothing for anything else.
std::optional<std::size_t> NumberIn(std::string_view columns)
{
    const std::size_t begin = columns.find_first_not_of(' ');
    if (begin == std::string_view::npos)
        return std::nullopt;
    std::size_t number = 0;
    for (const char digit : columns.substr(begin, columns.find_last_not_of(' ') + 1 - begin)) {
        if (digit < '0' || digit > '9')
            return std::nullopt;
        number = 10 * number + std::size_t(digit - '0');
    }
    return number;
}

std::optional<std::size_t> SectionOf(std::string_view line)
{
    const std::string_view field = line.substr(kLetterColumn, kFieldColumns);
    const std::size_t section = kSections.find(field.front());
    if (section == std::string_view::npos || !NumberIn(field.substr(1)))
        return std::nullopt;
    return section;
}

bool Agrees(std::string_view terminate, const LineCounts& counts)
{
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const std::string_view field = terminate.substr(i * kFieldColumns, kFieldColumns);
        if (field.front() != kSections[i] || NumberIn(field.substr(1)) != counts[i])
            return false;
    }
    return true;
}

} // namespace

bool AreIgesSectionsWhole(QIODevice& file)
{
    LineReader lines(file);
    LineCounts counts = {};
    std::size_t section = 0;
    for (std::string_view line = lines.Take(); !line.empty(); line = lines.Take()) {
        if (line.find_first_not_of(' ') == std::string_view::npos)
            continue;
        section = SectionOf(line).value_or(section);
        if (section == kTerminate)
            return Agrees(line, counts);
        ++counts[section];
    }
    return false;
}

} // namespace kr::cad
