#include "fileformat/3mf/SetAside_p.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include <QXmlStreamReader>

#include "core/common/LargePages_p.h"
#include "fileformat/3mf/PlainElements_p.h"
#include "fileformat/3mf/XmlEncoding_p.h"

namespace kr::package3mf {

namespace {

constexpr char kTarget[] = "kr-set-aside";

// Shorter rows are not worth an instruction.
constexpr std::size_t kShortestRow = 16;

// About where a row ends that reaches to @p position at least: looks in steps whether there still are
// elements of its kind.
const char* GuessEnd(const char* position, const char* end, std::string_view tag)
{
    constexpr std::ptrdiff_t kStep = 32'768;
    constexpr std::size_t kLongestElement = 512;
    for (; end - position > kStep; position += kStep) {
        const std::string_view window(position, kLongestElement);
        if (window.find(tag) == std::string_view::npos)
            return position;
    }
    return end;
}

// Makes room for as many elements as the row seems to have, judging from those that it has between @p begin
// and
// @p position. Not for many times as many: of short rows that stand close together each one seems to go on to
// the end of the document.
template<class Element>
void MakeRoom(std::vector<Element>& row, const char* begin, const char* position, const char* end,
              std::string_view tag)
{
    constexpr std::ptrdiff_t kMostTimes = 64;
    const std::ptrdiff_t readBytes = position - begin;
    const std::ptrdiff_t sightBytes = std::min(end - position, kMostTimes * readBytes);
    const auto restBytes =
        static_cast<std::size_t>(GuessEnd(position, position + sightBytes, tag) - position);
    const std::size_t rest = restBytes * row.size() / static_cast<std::size_t>(readBytes);
    ReserveLarge(row, row.size() + std::max(row.size(), rest + rest / 16));
}

// A row in the document.
struct Extent {
    const char* behindStaying = nullptr;
    const char* end = nullptr;
};

// Reads the elements of one kind from @p begin on; @p end is the document's last '<'.
template<class Element>
Extent ReadRow(const char* begin, const char* end, std::string_view tag,
               const char* (*read)(const char*, const char*, Element&), std::vector<Element>& row)
{
    constexpr std::size_t kSampled = 64;
    Extent extent;
    extent.end = begin;
    Element element;
    while (const char* const behind = read(SkipWhiteSpace(extent.end), end, element)) {
        extent.end = behind;
        row.push_back(element);
        if (row.size() == SetAsideElements::kStaying)
            extent.behindStaying = behind;
        if (row.size() >= kSampled && row.size() == row.capacity())
            MakeRoom(row, begin, behind, end, tag);
    }
    return extent;
}

bool StartsWith(const char* position, const char* end, std::string_view text)
{
    return static_cast<std::size_t>(end - position) >= text.size() &&
           std::memcmp(position, text.data(), text.size()) == 0;
}

} // namespace

class SetAsideElements::Splitter {
public:
    Splitter(const QByteArray& document, std::vector<ElementRow>& rows)
        : m_begin(document.constData()),
          m_end(m_begin + document.size()),
          m_lastTag(m_begin + std::max(document.lastIndexOf('<'), 0)),
          m_taken(m_begin),
          m_rows(rows)
    {}

    // False when the document has to stay as it is.
    bool Split();
    QByteArray TakeRemainder()
    {
        Keep(m_end);
        return std::move(m_remainder);
    }

private:
    const char* SplitAt(const char* position);
    template<class Element>
    const char* SetAside(const char* position, std::string_view tag,
                         const char* (*read)(const char*, const char*, Element&),
                         std::vector<Element> ElementRow::*elements);
    void Keep(const char* end)
    {
        m_remainder.append(m_taken, static_cast<int>(end - m_taken));
        m_taken = end;
    }

    const char* m_begin;
    const char* m_end;
    const char* m_lastTag;
    const char* m_taken;
    std::vector<ElementRow>& m_rows;
    QByteArray m_remainder;
};

bool SetAsideElements::Splitter::Split()
{
    const char* position = SkipDeclaration({m_begin, static_cast<std::size_t>(m_end - m_begin)});
    while (position) {
        const auto* const tag =
            static_cast<const char*>(std::memchr(position, '<', static_cast<std::size_t>(m_end - position)));
        if (!tag)
            return true;
        position = SplitAt(tag);
    }
    return false;
}

// Behind what begins with '<' at @p position; null when the document has to stay as it is.
const char* SetAsideElements::Splitter::SplitAt(const char* position)
{
    constexpr std::string_view kVertex = "<vertex";
    constexpr std::string_view kTriangle = "<triangle";
    constexpr std::string_view kComment = "<!--";
    constexpr std::string_view kCommentEnd = "-->";
    if (StartsWith(position, m_end, kVertex))
        return SetAside(position, kVertex, ReadPlainVertex, &ElementRow::vertices);
    if (StartsWith(position, m_end, kTriangle))
        return SetAside(position, kTriangle, ReadPlainTriangle, &ElementRow::faces);
    if (StartsWith(position, m_end, kComment)) {
        const char* const begin = position + kComment.size();
        return std::search(begin, m_end, kCommentEnd.begin(), kCommentEnd.end());
    }
    const bool isOfOtherKind = StartsWith(position, m_end, "<!") || StartsWith(position, m_end, "<?");
    return isOfOtherKind ? nullptr : position + 1;
}

template<class Element>
const char* SetAsideElements::Splitter::SetAside(const char* position, std::string_view tag,
                                                 const char* (*read)(const char*, const char*, Element&),
                                                 std::vector<Element> ElementRow::*elements)
{
    ElementRow row;
    const Extent extent = ReadRow(position, m_lastTag, tag, read, row.*elements);
    if ((row.*elements).size() >= kShortestRow) {
        Keep(extent.behindStaying);
        m_remainder.append("<?").append(kTarget).append(' ');
        m_remainder.append(QByteArray::number(static_cast<qulonglong>(m_rows.size()))).append("?>");
        m_taken = extent.end;
        m_rows.push_back(std::move(row));
    }
    // A row of none is an element of another kind.
    return std::max(extent.end, position + 1);
}

SetAsideElements::SetAsideElements(const QByteArray& document) : m_remainder(document)
{
    Splitter splitter(document, m_rows);
    if (splitter.Split())
        m_remainder = splitter.TakeRemainder();
    else
        m_rows.clear();
}

ElementRow* SetAsideElements::Take(const QXmlStreamReader& reader)
{
    if (reader.processingInstructionTarget() != QLatin1String(kTarget))
        return nullptr;
    const std::size_t row = reader.processingInstructionData().toUInt();
    return row < m_rows.size() ? &m_rows[row] : nullptr;
}

} // namespace kr::package3mf
