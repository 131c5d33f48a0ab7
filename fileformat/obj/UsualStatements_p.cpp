#include "fileformat/obj/UsualStatements_p.h"

#include <cstdint>
#include <cstring>

#include "core/common/DecimalText_p.h"

namespace kr::obj {

namespace {

// Every scan ends at the line feed at the latest, so none has to look where the block ends.

const char* SkipBlanks(const char* position)
{
    while (*position == ' ')
        ++position;
    return position;
}

bool IsEndOfWord(char character)
{
    return character == ' ' || character == '\n';
}

// A number that is too long for the fast ways.
const char* ScanLongDecimal(const char* position, double& value)
{
    const char* end = position;
    while (!IsEndOfWord(*end))
        ++end;
    return ParseDecimal(position, end, value) ? end : nullptr;
}

const char* ScanNumber(const char* position, double& value)
{
    const char* const end = ScanShortDecimal(position, value);
    return end && IsEndOfWord(*end) ? end : ScanLongDecimal(position, value);
}

// Reads the numbers of a statement, the first @p Kept of them into @p values. Null when one is no number.
template<int Kept>
const char* ScanNumbers(const char* position, double* values, int& count)
{
    count = 0;
    for (position = SkipBlanks(position); *position != '\n'; position = SkipBlanks(position)) {
        double surplus;
        position = ScanNumber(position, count < Kept ? values[count] : surplus);
        if (!position)
            return nullptr;
        ++count;
    }
    return position;
}

const char* ReadVertex(const char* position, Content& content)
{
    double values[4];
    int count;
    position = ScanNumbers<4>(position, values, count);
    if (!position || count < 3)
        return nullptr;
    content.vertices.push_back(VertexFromFile(values, count));
    return position;
}

const char* ReadTexCoord(const char* position, Content& content)
{
    double values[2];
    int count;
    position = ScanNumbers<2>(position, values, count);
    if (!position || count < 2)
        return nullptr;
    content.texCoords.emplace_back(static_cast<float>(values[0]), static_cast<float>(values[1]));
    return position;
}

// Behind a line that is of no interest; null when it holds more than visible ASCII and blanks, or a
// backslash, which may make the next line a part of it.
const char* SkipPlainLine(const char* position)
{
    constexpr std::uint64_t kEach = 0x0101010101010101;
    for (;; position += sizeof(std::uint64_t)) {
        std::uint64_t bytes;
        std::memcpy(&bytes, position, sizeof bytes);
        const std::uint64_t noBackslash = bytes ^ ('\\' * kEach);
        const std::uint64_t isSpecial =
            ((bytes - ' ' * kEach) | bytes | ((noBackslash - kEach) & ~noBackslash)) & (0x80 * kEach);
        if (isSpecial == 0)
            continue;
        // A byte that is none may be marked too, but only behind one that is.
        position += __builtin_ctzll(isSpecial) / 8;
        return *position == '\n' ? position : nullptr;
    }
}

// vertex, vertex/texture, vertex/texture/normal or vertex//normal
const char* ReadCorner(const char* position, Polygon& polygon)
{
    int number;
    position = ScanShortInteger(position, number);
    if (!position)
        return nullptr;
    polygon.AddVertex(number);
    if (*position != '/')
        return position;
    const bool hasTexture = position[1] != '/';
    if (hasTexture) {
        position = ScanShortInteger(position + 1, number);
        if (!position)
            return nullptr;
        polygon.AddTexture(number);
        if (*position != '/')
            return position;
    } else {
        ++position;
    }
    return ScanShortInteger(position + 1, number);
}

const char* ReadCorners(const char* position, Polygon& polygon)
{
    int count = 0;
    for (position = SkipBlanks(position); *position != '\n'; position = SkipBlanks(position)) {
        position = ReadCorner(position, polygon);
        if (!position || !IsEndOfWord(*position))
            return nullptr;
        ++count;
    }
    return count < 3 ? nullptr : position;
}

const char* ReadFace(const char* position, Content& content)
{
    Polygon polygon(content);
    position = ReadCorners(position, polygon);
    if (position)
        polygon.Finish();
    else
        polygon.Drop();
    return position;
}

const char* ReadLine(const char* begin, Content& content)
{
    if (begin[0] == 'f' && begin[1] == ' ')
        return ReadFace(begin + 2, content);
    if (begin[0] == '#')
        return SkipPlainLine(begin);
    if (begin[0] != 'v')
        return nullptr;
    if (begin[1] == ' ')
        return ReadVertex(begin + 2, content);
    if (begin[1] == 't' && begin[2] == ' ')
        return ReadTexCoord(begin + 3, content);
    if (begin[1] == 'n' && begin[2] == ' ')
        return SkipPlainLine(begin + 3);
    return nullptr;
}

} // namespace

const char* ReadUsualStatements(const char* begin, const char* end, Content& content)
{
    while (begin != end) {
        const char* const newLine = ReadLine(begin, content);
        if (!newLine)
            break;
        begin = newLine + 1;
    }
    return begin;
}

} // namespace kr::obj
