#include "fileformat/3mf/XmlWork_p.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace kr::package3mf {

namespace {

constexpr int kMostAttributes = 20'000;
constexpr int kMostPercentSigns = 100;
constexpr qint64 kForEachByte = 4;

// What stands in quotes in the start tag at @p tag; 0 for anything else that begins with '<'. Counts no
// further than needed.
int CountValues(const char* tag, const char* end)
{
    constexpr std::string_view kNoStartTag = "!?/";
    const char* position = tag + 1;
    if (position == end || kNoStartTag.find(*position) != std::string_view::npos)
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
bool HasTagOfTooManyAttributes(const char* begin, const char* end)
{
    constexpr std::ptrdiff_t kShortestAttribute = 5; // blank, name, equals sign, two quotes
    constexpr std::ptrdiff_t kWindow = kShortestAttribute * kMostAttributes / 2;
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

// From the document type on, which stands in front of the first element; empty when there is none.
std::string_view FromDocumentType(std::string_view document)
{
    struct Skipped {
        std::string_view begin;
        std::string_view end;
    };
    constexpr Skipped kSkipped[] = {{"<!--", "-->"}, {"<?", "?>"}};
    constexpr std::string_view kDocumentType = "<!DOCTYPE";
    for (;;) {
        document.remove_prefix(std::min(document.find('<'), document.size()));
        const auto skipped = std::find_if(std::begin(kSkipped), std::end(kSkipped), [&](const Skipped& what) {
            return document.substr(0, what.begin.size()) == what.begin;
        });
        if (skipped == std::end(kSkipped))
            return document.substr(0, kDocumentType.size()) == kDocumentType ? document : std::string_view();
        document.remove_prefix(std::min(document.find(skipped->end, skipped->begin.size()), document.size()));
    }
}

} // namespace

bool XmlWork::Begin(const QByteArray& document)
{
    m_left += kForEachByte * document.size();
    m_documentTypeSize = 0;
    m_declarationCount = 0;
    m_declarationCounts.clear();
    const std::string_view text(document.constData(), static_cast<std::size_t>(document.size()));
    const std::string_view documentType = FromDocumentType(text);
    return std::count(documentType.begin(), documentType.end(), '%') <= kMostPercentSigns &&
           !HasTagOfTooManyAttributes(text.data(), text.data() + text.size());
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
    return names * names / 2 + names * m_declarationCount;
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
