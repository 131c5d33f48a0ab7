#include "fileformat/stl/STLText_p.h"

#include <algorithm>
#include <cstring>

#include "core/common/DecimalText_p.h"
#include "fileformat/stl/STLScanner_p.h"

namespace kr::stl {

namespace {

// text file
//   solid NAME                 the first line, passed over
//     facet normal x y z
//       outer loop
//         vertex x y z         three times
//       endloop
//     endfacet
//   endsolid NAME              another solid may follow
//
// Only "normal", "vertex" and "endsolid" are statements. All other words are passed over, so nothing depends
// on lines, on the nesting, or on three vertices to a facet.

constexpr std::size_t kTokenCapacity = 254;
constexpr std::size_t kLongestGap = 160;

// Byte 0..255 to whether it belongs to a token.
struct TokenBytes {
    bool values[256] = {};
    constexpr TokenBytes()
    {
        for (int byte = 0; byte < 256; ++byte)
            values[byte] = IsTokenByte(byte);
    }
    bool operator[](char byte) const { return values[static_cast<unsigned char>(byte)]; }
};
constexpr TokenBytes kTokenBytes;

// What stands between the numbers of one statement and those of the next: words that are passed over and the
// next keyword, from behind the one byte that ends a number up to behind the one that ends the keyword. A
// program writes all its facets alike, so a gap seen once is recognised by comparing bytes instead of reading
// its words again.
class Gap {
public:
    void Learn(const char* begin, const char* end)
    {
        m_size = static_cast<std::size_t>(end - begin);
        if (m_size > kLongestGap)
            m_size = 0;
        std::copy_n(begin, m_size, m_bytes);
    }
    // The position behind the gap, or null when it does not stand there.
    const char* Skip(const char* position, const char* limit) const
    {
        if (m_size == 0 || static_cast<std::size_t>(limit - position) < m_size ||
            std::memcmp(position, m_bytes, m_size) != 0)
            return nullptr;
        return position + m_size;
    }

private:
    std::size_t m_size = 0;
    char m_bytes[kLongestGap];
};

// Three tokens of a statement, all of them in memory, each with the byte behind it. Each gives the position
// behind what it took, or null for anything unusual, which the general rules then read from the same place.
const char* SkipSeparators(const char* position, const char* limit)
{
    while (position != limit && !kTokenBytes[*position])
        ++position;
    return position;
}

const char* SkipUsualTokens(const char* position, const char* limit)
{
    for (int i = 0; i < 3; ++i) {
        position = SkipSeparators(position, limit);
        while (position != limit && kTokenBytes[*position])
            ++position;
        if (position == limit)
            return nullptr;
        ++position;
    }
    return position;
}

const char* ReadUsualPoint(const char* position, const char* limit, Vector3D<float>& point)
{
    double numbers[3];
    for (double& number : numbers) {
        position = ScanUsualDecimal(SkipSeparators(position, limit), limit, number);
        if (!position || position == limit || kTokenBytes[*position])
            return nullptr;
        ++position;
    }
    point = {static_cast<float>(numbers[0]), static_cast<float>(numbers[1]), static_cast<float>(numbers[2])};
    return position;
}

class TextReader {
public:
    TextReader(BlockReader& source, std::size_t expectedCorners) : m_source(source)
    {
        m_soup.corners = Scratch<Vector3D<float>>(std::max<std::size_t>(expectedCorners, 3));
    }

    bool ReadAll();
    TriangleSoup TakeSoup() { return std::move(m_soup); }

private:
    enum class Progress { More, End, Broken };
    struct Statement {
        std::string_view keyword;
        Progress (TextReader::*read)();
    };
    static const Statement kStatements[];

    void SkipLine();
    void ReadUsualFacets();
    const char* ReadUsualNormal(const char* position, const char* limit);
    const char* ReadUsualVertex(const Gap& gap, const char* position, const char* limit);
    Progress ReadStatement();
    const Statement* FindStatement();
    std::string_view NextToken();
    Progress ReadNormal();
    Progress ReadVertex();
    Progress ReadEndOfSolid();
    void LearnGap(Gap& gap);
    void AppendCorner(const Vector3D<float>& corner);

    BlockReader& m_source;
    TriangleSoup m_soup;
    Gap m_gapBeforeNormal;
    Gap m_gapBeforeFirstVertex;
    Gap m_gapBeforeNextVertex;
    bool m_isBehindNormal = false;
    const char* m_statementBegin = nullptr;
    std::size_t m_statementBlock = 0;
    char m_token[kTokenCapacity];
};

const TextReader::Statement TextReader::kStatements[] = {
    {"vertex", &TextReader::ReadVertex},
    {"normal", &TextReader::ReadNormal},
    {"endsolid", &TextReader::ReadEndOfSolid},
};

bool TextReader::ReadAll()
{
    SkipLine();
    Progress progress = Progress::More;
    while (progress == Progress::More) {
        ReadUsualFacets();
        progress = ReadStatement();
    }
    return progress == Progress::End;
}

void TextReader::SkipLine()
{
    for (int byte = 0; byte >= 0 && byte != '\n';)
        byte = m_source.NextByte();
}

// Takes facets as long as they look like the ones before. Stops between two statements, wherever that is.
void TextReader::ReadUsualFacets()
{
    const std::string_view bytes = m_source.Buffered();
    const char* const limit = bytes.data() + bytes.size();
    const Gap* const vertexGaps[] = {&m_gapBeforeFirstVertex, &m_gapBeforeNextVertex, &m_gapBeforeNextVertex};
    const char* position = bytes.data();
    bool isUsual = true;
    while (isUsual) {
        const char* next = ReadUsualNormal(position, limit);
        for (const Gap* const gap : vertexGaps) {
            if (!next)
                break;
            position = next;
            next = ReadUsualVertex(*gap, position, limit);
        }
        isUsual = next != nullptr;
        if (isUsual)
            position = next;
    }
    m_source.SkipTo(position);
}

const char* TextReader::ReadUsualNormal(const char* position, const char* limit)
{
    position = m_gapBeforeNormal.Skip(position, limit);
    if (position)
        position = SkipUsualTokens(position, limit);
    if (position) {
        ++m_soup.normalCount;
        m_isBehindNormal = true;
    }
    return position;
}

const char* TextReader::ReadUsualVertex(const Gap& gap, const char* position, const char* limit)
{
    Vector3D<float> corner;
    position = gap.Skip(position, limit);
    if (position)
        position = ReadUsualPoint(position, limit, corner);
    if (position) {
        AppendCorner(corner);
        m_isBehindNormal = false;
    }
    return position;
}

TextReader::Progress TextReader::ReadStatement()
{
    m_statementBegin = m_source.Buffered().data();
    m_statementBlock = m_source.BlockNumber();
    const Statement* const statement = FindStatement();
    return statement ? (this->*statement->read)() : Progress::End;
}

const TextReader::Statement* TextReader::FindStatement()
{
    for (;;) {
        const std::string_view token = NextToken();
        if (token.empty())
            return nullptr;
        for (const Statement& statement : kStatements) {
            if (EqualsIgnoringCase(token, statement.keyword))
                return &statement;
        }
    }
}

std::string_view TextReader::NextToken()
{
    return {m_token, ReadToken(m_source, m_token, kTokenCapacity)};
}

TextReader::Progress TextReader::ReadNormal()
{
    LearnGap(m_gapBeforeNormal);
    m_isBehindNormal = true;
    for (int i = 0; i < 3; ++i) {
        if (NextToken().empty())
            return Progress::Broken;
    }
    ++m_soup.normalCount;
    return Progress::More;
}

TextReader::Progress TextReader::ReadVertex()
{
    LearnGap(m_isBehindNormal ? m_gapBeforeFirstVertex : m_gapBeforeNextVertex);
    m_isBehindNormal = false;
    double numbers[3];
    for (double& number : numbers) {
        const std::string_view token = NextToken();
        if (token.empty())
            return Progress::Broken;
        ParseDecimal(token.data(), token.data() + token.size(), number);
    }
    AppendCorner(
        {static_cast<float>(numbers[0]), static_cast<float>(numbers[1]), static_cast<float>(numbers[2])});
    return Progress::More;
}

TextReader::Progress TextReader::ReadEndOfSolid()
{
    Probe probe;
    const int probeSize = static_cast<int>(kSolid.size());
    return FindSolid(m_source, probe, probeSize) == SolidSearch::Found ? Progress::More : Progress::End;
}

// A gap that lies in two blocks is left to the next time.
void TextReader::LearnGap(Gap& gap)
{
    if (m_statementBlock == m_source.BlockNumber())
        gap.Learn(m_statementBegin, m_source.Buffered().data());
}

void TextReader::AppendCorner(const Vector3D<float>& corner)
{
    if (m_soup.cornerCount == m_soup.corners.size()) {
        Scratch<Vector3D<float>> larger(m_soup.cornerCount * 2);
        std::copy_n(m_soup.corners.data(), m_soup.cornerCount, larger.data());
        m_soup.corners.swap(larger);
    }
    m_soup.corners[m_soup.cornerCount++] = corner;
}

} // namespace

std::optional<TriangleSoup> ReadText(BlockReader& source, std::size_t expectedCorners)
{
    TextReader reader(source, expectedCorners);
    if (!reader.ReadAll())
        return std::nullopt;
    return reader.TakeSoup();
}

} // namespace kr::stl
