#include "fileformat/3mf/XmlWork_p.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "fileformat/3mf/XmlEncoding_p.h"

namespace kr::package3mf {

namespace {

constexpr int kMostAttributes = 20'000;
constexpr qint64 kShortestAttribute = 5; // blank, name, equals sign, two quotes
constexpr qint64 kForEachByte = 4;

// Each compared with each other.
constexpr qint64 WorkOfNames(qint64 count)
{
    constexpr qint64 kMany = 1'000'000; // far too many
    const qint64 names = std::min(count, kMany);
    return names * names / 2;
}

// What stands in quotes in the start tag at @p tag; 0 for anything else that begins with '<', behind which
// there has to be something. Counts no further than needed.
int CountValues(const char* tag, const char* end)
{
    constexpr std::string_view kNoStartTag = "!?/";
    const char* position = tag + 1;
    if (kNoStartTag.find(*position) != std::string_view::npos)
        return 0;
    int count = 0;
    for (; position != end && *position != '>' && count <= kMostAttributes; ++position) {
        if (*position != '"' && *position != '\'')
            continue;
        ++count;
        position = std::find(position + 1, end, *position);
        if (position == end)
            break;
    }
    return count;
}

// A tag holds no '<' but its first one. So many attributes cannot stand in less than two windows, one of
// which is without any.
bool HasTagOfTooManyAttributes(std::string_view text)
{
    constexpr std::ptrdiff_t kWindow = kShortestAttribute * kMostAttributes / 2;
    const char* const begin = text.data();
    const char* const end = begin + text.size();
    for (const char* window = begin; end - window > kWindow; window += kWindow) {
        if (std::memchr(window, '<', kWindow))
            continue;
        const char* tag = window;
        while (tag != begin && *tag != '<')
            --tag;
        if (CountValues(tag, end) > kMostAttributes)
            return true;
        window = std::find(window, end, '<') - kWindow;
    }
    return false;
}

// Behind the comment, the processing instruction or the literal at @p position; @p position for anything
// else.
std::size_t SkipAside(std::string_view text, std::size_t position)
{
    struct Aside {
        std::string_view begin;
        std::string_view end;
    };
    constexpr Aside kAsides[] = {{"<!--", "-->"}, {"<?", "?>"}, {"\"", "\""}, {"'", "'"}};
    for (const auto& [begin, end] : kAsides) {
        if (text.substr(position, begin.size()) != begin)
            continue;
        const std::size_t last = text.find(end, position + begin.size());
        return last == std::string_view::npos ? text.size() : last + end.size();
    }
    return position;
}

// Behind the document type that the text begins with. What a parameter entity stands for may open a literal
// that is closed anywhere: the end of the text then.
std::size_t EndOfDocumentType(std::string_view text)
{
    constexpr std::string_view kMarks = "\"'%[]<>";
    bool isInBrackets = false;
    std::size_t i = 0;
    while ((i = text.find_first_of(kMarks, i + 1)) < text.size()) {
        const char mark = text[i];
        if (mark == '%')
            return text.size();
        if (mark == '>' && !isInBrackets)
            return i + 1;
        if (mark == '[' || mark == ']')
            isInBrackets = mark == '[';
        i = std::max(SkipAside(text, i), i + 1) - 1;
    }
    return text.size();
}

// It stands in front of the first element; empty when there is none.
std::string_view DocumentTypeOf(std::string_view text)
{
    constexpr std::string_view kDocumentType = "<!DOCTYPE";
    std::size_t begin = 0, behind = 0;
    do {
        begin = std::min(text.find('<', behind), text.size());
        behind = SkipAside(text, begin);
    } while (behind > begin);
    text.remove_prefix(begin);
    if (text.substr(0, kDocumentType.size()) != kDocumentType)
        return {};
    return text.substr(0, EndOfDocumentType(text));
}

// What a document type may make the reader do within a token, where nothing can stop it: compare the
// attributes that it declares, or those of a tag in an entity; put entities into an attribute again and
// again.
qint64 WorkOfDocumentType(std::string_view text)
{
    constexpr qint64 kLongestExpansion = 4096; // of an entity, by Qt
    constexpr qint64 kForEachCharacter = 4;
    const std::string_view type = DocumentTypeOf(text);
    const auto size = static_cast<qint64>(type.size());
    if (size == 0)
        return 0;
    const qint64 expansion = std::min(size, kLongestExpansion);
    const qint64 parameters = std::count(type.begin(), type.end(), '%');
    const qint64 references = std::count(text.begin(), text.end(), '&');
    return WorkOfNames((size + parameters * expansion) / kShortestAttribute) +
           references * expansion * kForEachCharacter;
}

} // namespace

bool XmlWork::Begin(const QByteArray& document)
{
    m_left += kForEachByte * document.size();
    m_documentTypeSize = 0;
    m_declarationCount = 0;
    m_declarationCounts.clear();
    const std::string_view bytes(document.constData(), static_cast<std::size_t>(document.size()));
    const char* const behind = SkipDeclaration(bytes);
    const std::optional<std::string> decoded = behind ? std::string() : DecodedBehindDeclaration(document);
    if (!decoded)
        return false;
    const std::string_view text =
        behind ? bytes.substr(static_cast<std::size_t>(behind - bytes.data())) : *decoded;
    m_left -= WorkOfDocumentType(text);
    return m_left >= 0 && !HasTagOfTooManyAttributes(text);
}

QXmlStreamReader::TokenType XmlWork::ReadNext(QXmlStreamReader& reader)
{
    const QXmlStreamReader::TokenType token = reader.readNext();
    if (token == QXmlStreamReader::StartElement) {
        m_left -= WorkOfTag(reader);
    } else if (token == QXmlStreamReader::EndElement && !m_declarationCounts.empty()) {
        m_declarationCount -= m_declarationCounts.back();
        m_declarationCounts.pop_back();
    } else if (token == QXmlStreamReader::DTD) {
        m_documentTypeSize = std::max(reader.text().size(), 1);
    }
    if (m_documentTypeSize > 0)
        m_left -= WorkOfDeclared(reader);
    if (m_left < 0 && !reader.hasError())
        reader.raiseError();
    return reader.tokenType();
}

qint64 XmlWork::WorkOfTag(const QXmlStreamReader& reader)
{
    const int declarationCount = reader.namespaceDeclarations().size();
    m_declarationCounts.push_back(declarationCount);
    m_declarationCount += declarationCount;
    const qint64 names = qint64(reader.attributes().size()) + declarationCount + 1;
    return WorkOfNames(names) + names * m_declarationCount;
}

// Of what may come from the document type: each token and its text; for a tag each declared attribute is
// looked at, and those that lack are put in.
qint64 XmlWork::WorkOfDeclared(const QXmlStreamReader& reader) const
{
    constexpr qint64 kForEachToken = 8, kForEachDefault = 64;
    constexpr qint64 kShortestDeclaration = 8;
    qint64 work = kForEachToken + reader.text().size();
    if (!reader.isStartElement())
        return work;
    for (const QXmlStreamAttribute& attribute : reader.attributes())
        work += attribute.value().size() + (attribute.isDefault() ? kForEachDefault : 0);
    return work + m_documentTypeSize / kShortestDeclaration;
}

} // namespace kr::package3mf
