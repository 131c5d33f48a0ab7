#include "fileformat/stl/STLText_p.h"

#include <algorithm>
#include <cstring>

#include "core/common/AsciiText_p.h"
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
    // Steps over the gap if the bytes begin with it.
    bool Skip(std::string_view& bytes) const
    {
        if (m_size == 0 || bytes.size() < m_size || std::memcmp(bytes.data(), m_bytes, m_size) != 0)
            return false;
        bytes.remove_prefix(m_size);
        return true;
    }

private:
    std::size_t m_size = 0;
    char m_bytes[kLongestGap];
};

// The following step over tokens and the byte behind each, as long as all are in memory and of the usual
// kind. What they refuse the general rules read from where the statement begins.

const char* SkipSeparators(const char* position, const char* limit)
{
    while (position != limit && !kTokenBytes[*position])
        ++position;
    return position;
}

bool SkipUsualTokens(std::string_view& bytes)
{
    const char* position = bytes.data();
    const char* const limit = position + bytes.size();
    for (int i = 0; i < 3; ++i) {
        position = SkipSeparators(position, limit);
        while (position != limit && kTokenBytes[*position])
            ++position;
        if (position == limit)
            return false;
        ++position;
    }
    bytes.remove_prefix(static_cast<std::size_t>(position - bytes.data()));
    return true;
}

bool ReadUsualPoint(std::string_view& bytes, Vector3D<float>& point)
{
    const char* position = bytes.data();
    const char* const limit = position + bytes.size();
    double numbers[3];
    for (double& number : numbers) {
        position = ScanUsualDecimal(SkipSeparators(position, limit), limit, number);
        if (!position || position == limit || kTokenBytes[*position])
            return false;
        ++position;
    }
    bytes.remove_prefix(static_cast<std::size_t>(position - bytes.data()));
    point = {static_cast<float>(numbers[0]), static_cast<float>(numbers[1]), static_cast<float>(numbers[2])};
    return true;
}

// m_gap... and m_isBehindNormal only make things faster: nothing that is read depends on them.
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
    bool ReadUsualNormal();
    bool ReadUsualVertex(const Gap& gap);
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

// Takes statements as long as they follow each other as in the facet before, and stops in front of the first
// that does not.
void TextReader::ReadUsualFacets()
{
    while (ReadUsualNormal() && ReadUsualVertex(m_gapBeforeFirstVertex) &&
           ReadUsualVertex(m_gapBeforeNextVertex) && ReadUsualVertex(m_gapBeforeNextVertex)) {
    }
}

bool TextReader::ReadUsualNormal()
{
    std::string_view bytes = m_source.Buffered();
    if (!m_gapBeforeNormal.Skip(bytes) || !SkipUsualTokens(bytes))
        return false;
    m_source.SkipTo(bytes.data());
    m_isBehindNormal = true;
    ++m_soup.normalCount;
    return true;
}

bool TextReader::ReadUsualVertex(const Gap& gap)
{
    std::string_view bytes = m_source.Buffered();
    Vector3D<float> corner;
    if (!gap.Skip(bytes) || !ReadUsualPoint(bytes, corner))
        return false;
    m_source.SkipTo(bytes.data());
    m_isBehindNormal = false;
    AppendCorner(corner);
    return true;
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

// Learns what stands between the beginning of the statement and here, unless a block ends in between.
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
