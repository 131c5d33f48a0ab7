#include "fileformat/obj/OBJText_p.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>

#include <QFile>

#include "core/common/DecimalText_p.h"
#include "core/utility/Utility.h"
#include "fileformat/obj/LineReader_p.h"
#include "fileformat/obj/ListSizes_p.h"
#include "fileformat/obj/UsualStatements_p.h"

namespace kr::obj {

namespace {

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char byte) { return (byte & 0x80) == 0; });
}

// fromUtf8() drops a byte-order mark, which it may only at the begin of a line: no word is given to it that
// might begin with one.
QString DecodedWord(std::string_view word)
{
    const QByteArray behindAnother = QByteArray("-").append(word.data(), static_cast<int>(word.size()));
    return QString::fromUtf8(behindAnother).mid(1);
}

double NumberFrom(std::string_view word)
{
    double value = 0;
    const char* const end = word.data() + word.size();
    if (ScanUsualDecimal(word.data(), end, value) == end)
        return value;
    return Utility::ConvertStringToDoubleValue(DecodedWord(word));
}

// 0 for what is no integer of 32 bits, as in all texts.
int IndexFrom(std::string_view word)
{
    int number = 0;
    const char* const end = word.data() + word.size();
    const auto [position, error] = std::from_chars(word.data(), end, number);
    return error == std::errc() && position == end ? number : DecodedWord(word).toInt();
}

// The words of a line. Blanks keep them apart, and nothing else.
void Split(std::string_view line, std::vector<std::string_view>& words)
{
    words.clear();
    std::size_t begin = line.find_first_not_of(' ');
    while (begin != std::string_view::npos) {
        const std::size_t end = std::min(line.find(' ', begin), line.size());
        words.push_back(line.substr(begin, end - begin));
        begin = line.find_first_not_of(' ', end);
    }
}

class TextReader {
public:
    explicit TextReader(QFile& file) : m_content(MakeRoomFor(file)), m_lines(file) {}

    void ReadAll();
    Content TakeContent() { return std::move(m_content); }

private:
    struct Statement {
        std::string_view keyword;
        std::size_t fewestWords;
        std::size_t mostWords;
        void (TextReader::*read)();
    };
    static const Statement kStatements[];

    bool HasRoom() const;
    void ReadUsualLines();
    void ReadLine(std::string_view line);
    void ReadVertex();
    void ReadTexCoord();
    void ReadFace();
    void ReadGroup();
    void ReadLibrary();

    Content m_content;
    LineReader m_lines;
    std::vector<std::string_view> m_words;
    QByteArray m_decodedLine;
};

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();

const TextReader::Statement TextReader::kStatements[] = {
    {"v", 4, kAnyNumber, &TextReader::ReadVertex}, {"vt", 3, kAnyNumber, &TextReader::ReadTexCoord},
    {"f", 4, kAnyNumber, &TextReader::ReadFace},   {"usemtl", 2, 2, &TextReader::ReadGroup},
    {"mtllib", 2, 2, &TextReader::ReadLibrary},
};

void TextReader::ReadAll()
{
    std::string_view line;
    for (ReadUsualLines(); HasRoom() && m_lines.Next(line); ReadUsualLines())
        ReadLine(line);
}

// Indices and counts are of 31 bits. What one line or block can add is far less than what is kept free.
bool TextReader::HasRoom() const
{
    constexpr std::size_t kMost = std::numeric_limits<int>::max() - 2 * kLongestLine;
    return std::max({m_content.vertices.size(), m_content.texCoords.size(), m_content.faces.size(),
                     m_content.textureFaces.size()}) <= kMost;
}

void TextReader::ReadUsualLines()
{
    const std::string_view lines = m_lines.WholeLines();
    m_lines.SkipTo(ReadUsualStatements(lines.data(), lines.data() + lines.size(), m_content));
}

void TextReader::ReadLine(std::string_view line)
{
    if (!IsAscii(line)) {
        // What is no UTF-8 becomes replacement characters, as in any text that is decoded.
        m_decodedLine = QString::fromUtf8(line.data(), static_cast<int>(line.size())).toUtf8();
        line = {m_decodedLine.constData(), static_cast<std::size_t>(m_decodedLine.size())};
    }
    if (line.empty() || line.front() == '#')
        return;
    Split(line, m_words);
    for (const Statement& statement : kStatements) {
        if (m_words.size() >= statement.fewestWords && m_words.size() <= statement.mostWords &&
            m_words.front() == statement.keyword)
            return (this->*statement.read)();
    }
}

void TextReader::ReadVertex()
{
    constexpr std::size_t kMostNumbers = 5;
    double values[kMostNumbers] = {};
    const std::size_t count = std::min(m_words.size() - 1, kMostNumbers);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = NumberFrom(m_words[i + 1]);
    m_content.vertices.push_back(VertexFromFile(values, static_cast<int>(count)));
}

void TextReader::ReadTexCoord()
{
    m_content.texCoords.emplace_back(static_cast<float>(NumberFrom(m_words[1])),
                                     static_cast<float>(NumberFrom(m_words[2])));
}

// A corner is split at "//" if there is one, else at "/". Only the latter gives it a texture part, which may
// be empty.
void TextReader::ReadFace()
{
    Polygon polygon(m_content);
    for (std::size_t i = 1; i < m_words.size(); ++i) {
        const std::string_view corner = m_words[i];
        const std::size_t doubled = corner.find("//");
        const std::size_t slash = doubled == std::string_view::npos ? corner.find('/') : doubled;
        polygon.AddVertex(IndexFrom(corner.substr(0, slash)));
        if (slash != doubled) {
            const std::string_view behind = corner.substr(slash + 1);
            polygon.AddTexture(IndexFrom(behind.substr(0, behind.find('/'))));
        }
    }
    polygon.Finish();
}

void TextReader::ReadGroup()
{
    MeshTextureGroup& group = m_content.groups.emplace_back();
    group.material.texCoordSet = 0;
    group.material.name = m_words[1];
}

void TextReader::ReadLibrary()
{
    m_content.materialLibrary = DecodedWord(m_words[1]);
}

} // namespace

Content ReadText(QFile& file)
{
    TextReader reader(file);
    reader.ReadAll();
    return reader.TakeContent();
}

} // namespace kr::obj
