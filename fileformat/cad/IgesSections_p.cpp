#include "fileformat/cad/IgesSections_p.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "fileformat/common/BlockReader_p.h"

namespace kr::cad {

namespace {

// line, 80 columns and its end; what stands behind them means nothing
//   1..72   content
//   73      letter of the section: start, global, directory, parameters, terminate
//   74..80  number of the line within the section
// terminate record, columns 1..32: a letter and 7 columns of number for each section before it
//   S0000001G0000004D0000098P0000049
constexpr std::size_t kColumns = 80;
constexpr std::size_t kLetterColumn = 72;
constexpr std::size_t kCountColumns = 8;
constexpr std::string_view kCountedSections = "SGDP";
constexpr char kTerminate = 'T';

using Line = std::array<char, kColumns>;
using Counts = std::array<std::size_t, kCountedSections.size()>;

// Takes the next line, blanks behind it, without what stands behind the columns.
// Returns false at the end of the file.
bool TakeLine(BlockReader& source, Line& line)
{
    int byte = source.NextByte();
    if (byte < 0)
        return false;
    line.fill(' ');
    for (std::size_t column = 0; byte >= 0 && byte != '\n'; ++column) {
        if (column < kColumns)
            line[column] = char(byte);
        byte = source.NextByte();
    }
    return true;
}

// A number in its columns, blanks around it allowed; false for anything else.
bool HoldsCount(std::string_view field, std::size_t count)
{
    const std::size_t begin = std::min(field.find_first_not_of(' '), field.size());
    const std::size_t end = field.find_last_not_of(' ') + 1;
    std::size_t value = 0;
    for (std::size_t i = begin; i < end; ++i) {
        if (field[i] < '0' || field[i] > '9')
            return false;
        value = 10 * value + std::size_t(field[i] - '0');
    }
    return begin < end && value == count;
}

bool AgreesWith(const Line& terminate, const Counts& counts)
{
    const std::string_view content(terminate.data(), terminate.size());
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const std::string_view field = content.substr(i * kCountColumns, kCountColumns);
        if (field.front() != kCountedSections[i] || !HoldsCount(field.substr(1), counts[i]))
            return false;
    }
    return true;
}

} // namespace

bool AreIgesSectionsWhole(QIODevice& file)
{
    BlockReader source(file, LineEnds::AsStored);
    Counts counts = {};
    Line line;
    while (TakeLine(source, line)) {
        const char letter = line[kLetterColumn];
        if (letter == kTerminate)
            return AgreesWith(line, counts);
        const std::size_t section = kCountedSections.find(letter);
        if (section != std::string_view::npos)
            ++counts[section];
    }
    return false;
}

} // namespace kr::cad
