#include "fileformat/texture/Document_p.h"

#include <cstring>
#include <utility>

#include <QJsonObject>
#include <QString>

#include "fileformat/texture/Base64_p.h"

namespace kr::texture {

// Nearly all of a document is the text of its picture. Parsed as the others it would be copied three times
// and be twice as long as UTF-16, which takes half as long as decoding the picture itself. So the text is
// taken out, a mark put in its place, and what is left parsed:
//
//     ... "image_data": "iVBORw0KGgo...", ...     ->     ... "image_data": "?picture?", ...
//
// That changes nothing else as long as there is no backslash: each quote then is the begin or the end of a
// string, and a string is what stands between. That the text was the picture is known when the mark comes out
// as the picture's text, and was nowhere else. In all other cases the whole is parsed.

namespace {

const QByteArray& Mark()
{
    static const QByteArray kMark = QByteArrayLiteral("?picture?");
    return kMark;
}

struct Range {
    int begin;
    int end;
};

int AfterBlanks(const QByteArray& bytes, int at)
{
    while (at < bytes.size() &&
           (bytes[at] == ' ' || bytes[at] == '\n' || bytes[at] == '\r' || bytes[at] == '\t'))
        ++at;
    return at;
}

// The string behind the first key of that name, without its quotes.
std::optional<Range> FindText(const QByteArray& bytes)
{
    const QByteArray key = QByteArray("\"") + kImageDataKey + '"';
    const int found = bytes.indexOf(key);
    if (found < 0)
        return std::nullopt;
    const int colon = AfterBlanks(bytes, found + key.size());
    const int quote = AfterBlanks(bytes, colon + 1);
    if (quote >= bytes.size() || bytes[colon] != ':' || bytes[quote] != '"')
        return std::nullopt;
    const char* const text = bytes.constData() + quote + 1;
    const void* const end = std::memchr(text, '"', static_cast<std::size_t>(bytes.size() - quote - 1));
    if (!end)
        return std::nullopt;
    return Range{quote + 1, static_cast<int>(static_cast<const char*>(end) - bytes.constData())};
}

bool IsMarked(const QJsonDocument& json)
{
    return json.object().value(QLatin1String(kImageDataKey)).toString() == QLatin1String(Mark());
}

} // namespace

Document ParseDocument(const QByteArray& bytes)
{
    if (const std::optional<Range> text = FindText(bytes)) {
        const QByteArray others = bytes.left(text->begin) + bytes.mid(text->end);
        std::optional<QByteArray> file = BytesOfPureBase64(
            QByteArray::fromRawData(bytes.constData() + text->begin, text->end - text->begin));
        if (file && !others.contains('\\') && !others.contains(Mark())) {
            QByteArray marked = others;
            marked.insert(text->begin, Mark());
            Document document{QJsonDocument::fromJson(marked), std::move(file)};
            if (document.json.isNull() || IsMarked(document.json))
                return document;
        }
    }
    return {QJsonDocument::fromJson(bytes), std::nullopt};
}

} // namespace kr::texture
