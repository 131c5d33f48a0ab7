#include "fileformat/3mf/XmlEncoding_p.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include <QRegularExpression>
#include <QStringList>
#include <QTextCodec>

#include "core/common/AsciiText_p.h"

namespace kr::package3mf {

namespace {

// Whether an XML declaration leaves no doubt that the document is in UTF-8. The XML reader follows each of
// several encodings in turn.
bool DeclaresUtf8(std::string_view declaration)
{
    constexpr std::string_view kEncoding = "encoding";
    constexpr std::string_view kQuotes = "'\"";
    const std::size_t name = declaration.find(kEncoding);
    if (name == std::string_view::npos)
        return true;
    const std::size_t open = declaration.find_first_of(kQuotes, name);
    const std::size_t close = declaration.find_first_of(kQuotes, open + 1);
    return close != std::string_view::npos && declaration.find(kEncoding, close) == std::string_view::npos &&
           EqualsIgnoringCase(declaration.substr(open + 1, close - open - 1), "utf-8");
}

constexpr int kUtf8 = 106; // its number among those of IANA

// As the reader takes it before it has seen a declaration.
const QTextCodec* CodecOfBegin(std::string_view document)
{
    using namespace std::string_view_literals;
    constexpr struct {
        std::string_view begin;
        int mib;
    } kOthers[] = {{"\xFE\xFF"sv, 1015}, {"\xFF\xFE"sv, 1015}, {"<\0"sv, 1014}, {"\0<"sv, 1013}};
    const auto other = std::find_if(std::begin(kOthers), std::end(kOthers), [&](const auto& encoding) {
        return document.substr(0, encoding.begin.size()) == encoding.begin;
    });
    return QTextCodec::codecForMib(other == std::end(kOthers) ? kUtf8 : other->mib);
}

bool BeginsDeclaration(const QString& text)
{
    const QLatin1String begin("<?xml");
    return text.startsWith(begin) && text.size() > begin.size() && text[begin.size()].isSpace();
}

// The XML declaration, in the encoding that the document begins with; empty when there is none. What would
// have "?>" before its end, or anything in front of it, the reader refuses.
QString DeclarationOf(const QByteArray& document, const QTextCodec* codec)
{
    constexpr qint64 kUsualSize = 4096;
    constexpr qint64 kGrowth = 16;
    for (qint64 size = kUsualSize;; size *= kGrowth) {
        const std::unique_ptr<QTextDecoder> decoder(codec->makeDecoder());
        const qint64 beginSize = std::min<qint64>(size, document.size());
        const QString begin = decoder->toUnicode(document.constData(), static_cast<int>(beginSize));
        const int end = begin.indexOf(QLatin1String("?>"));
        if (!BeginsDeclaration(begin) || (end < 0 && size >= document.size()))
            return {};
        if (end >= 0)
            return begin.left(end + 2);
    }
}

// In which encodings the reader has decoded the document when it has followed a declaration, one behind the
// other: it decodes all anew for each encoding, and keeps what it had when that is UTF-8. Empty when one is
// not known.
std::vector<const QTextCodec*> CodecsRead(const QTextCodec* first, const QStringList& declared)
{
    std::vector<const QTextCodec*> codecs = {first};
    for (const QString& name : declared) {
        const QTextCodec* const codec = QTextCodec::codecForName(name.toLatin1());
        if (!codec)
            return {};
        if (codec == codecs.back())
            continue;
        if (codec->mibEnum() != kUtf8)
            codecs.clear();
        codecs.push_back(codec);
    }
    return codecs;
}

QStringList EncodingsNamed(const QString& declaration)
{
    QStringList names;
    const QRegularExpression encoding(QStringLiteral("encoding\\s*=\\s*(['\"])(.*?)\\1"));
    for (auto found = encoding.globalMatch(declaration); found.hasNext();)
        names += found.next().captured(2);
    return names;
}

void AppendDecoded(const QByteArray& document, const QTextCodec* codec, std::string& text)
{
    constexpr qint64 kPiece = 1 << 16;
    const std::unique_ptr<QTextDecoder> decoder(codec->makeDecoder());
    for (qint64 begin = 0; begin < document.size(); begin += kPiece) {
        const qint64 size = std::min(kPiece, document.size() - begin);
        const QString piece = decoder->toUnicode(document.constData() + begin, static_cast<int>(size));
        std::transform(piece.begin(), piece.end(), std::back_inserter(text),
                       [](QChar character) { return character.toLatin1(); });
    }
}

} // namespace

const char* SkipDeclaration(std::string_view document)
{
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    constexpr std::string_view kDeclaration = "<?xml ";
    if (document.substr(0, kByteOrderMark.size()) == kByteOrderMark)
        document.remove_prefix(kByteOrderMark.size());
    // A NUL in second place tells an encoding of more bytes a character.
    if (document.size() < 2 || document[0] != '<' || document[1] == '\0')
        return nullptr;
    if (document.substr(0, kDeclaration.size()) != kDeclaration)
        return document.data();
    const std::size_t size = document.find("?>");
    if (size == std::string_view::npos || !DeclaresUtf8(document.substr(0, size)))
        return nullptr;
    return document.data() + size + 2;
}

std::optional<std::string> DecodedBehindDeclaration(const QByteArray& document)
{
    constexpr int kFreeEncodings = 4;
    constexpr qint64 kMostDecoded = qint64(1) << 28;
    const QTextCodec* const first =
        CodecOfBegin({document.constData(), static_cast<std::size_t>(document.size())});
    const QString declaration = DeclarationOf(document, first);
    const QStringList encodings = EncodingsNamed(declaration);
    if (encodings.size() > kFreeEncodings && encodings.size() * qint64(document.size()) > kMostDecoded)
        return std::nullopt;
    std::string text;
    for (const QTextCodec* const codec : CodecsRead(first, encodings))
        AppendDecoded(document, codec, text);
    // In what it has decoded anew the reader goes on where it was.
    text.erase(0, static_cast<std::size_t>(declaration.size()));
    return text;
}

} // namespace kr::package3mf
