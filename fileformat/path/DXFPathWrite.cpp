#include "fileformat/path/DXFPathFile.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include <QByteArray>
#include <QFile>

#include "fileformat/common/BlockWriter_p.h"
#include "fileformat/common/PlainFile_p.h"

namespace {

using kr::BlockWriter;
using Contour = DXFPathFile::Contour;
using Names = std::map<int, std::string>;

constexpr std::size_t kLargestCount = std::numeric_limits<qint32>::max();
// Beyond a few times that, neither a QString nor the count of its encoded bytes has room for it.
constexpr std::size_t kLongestName = 100'000'000;

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "numbers are stored as they are held");

std::string_view NameOf(int id, const Names& names)
{
    const auto found = names.find(id);
    return found == names.end() ? std::string_view() : std::string_view(found->second);
}

bool CanBeCounted(const std::vector<Contour>& contours)
{
    return contours.size() <= kLargestCount &&
           std::all_of(contours.begin(), contours.end(),
                       [](const Contour& points) { return points.size() <= kLargestCount; });
}

bool CanBeStored(const DXFPathFile::Paths& paths, const Names& names)
{
    return paths.size() <= kLargestCount &&
           std::all_of(paths.begin(), paths.end(), [&names](const auto& set) {
               return NameOf(set.first, names).size() <= kLongestName && CanBeCounted(set.second);
           });
}

/// Small pieces are gathered, large ones go straight to the file.
class PathWriter {
public:
    explicit PathWriter(QFile& file) : m_file(file), m_small(file) {}

    void Integer(qint32 value) { m_small.Append({reinterpret_cast<const char*>(&value), sizeof value}); }
    void Count(std::size_t count) { Integer(static_cast<qint32>(count)); }
    void Bytes(std::string_view bytes)
    {
        if (bytes.empty())
            return;
        if (bytes.size() <= BlockWriter::kLargestPiece)
            return m_small.Append(bytes);
        m_small.Flush();
        m_file.write(bytes.data(), static_cast<qint64>(bytes.size()));
    }

private:
    QFile& m_file;
    BlockWriter m_small;
};

void WriteName(PathWriter& writer, std::string_view name)
{
    const QByteArray base64 = DXFPathFile::GetBase64StringFromUnicodeString(
        QString::fromUtf8(name.data(), static_cast<int>(name.size())));
    const auto size = static_cast<std::size_t>(base64.size());
    writer.Count(size);
    writer.Bytes({base64.constData(), size});
}

void WriteContour(PathWriter& writer, const Contour& points)
{
    writer.Count(points.size());
    const auto* const bytes = reinterpret_cast<const char*>(points.data());
    writer.Bytes({bytes, points.size() * sizeof(Contour::value_type)});
}

} // namespace

bool DXFPathFile::WriteDXFPathFile(const Paths& paths, const std::map<int, std::string>& names,
                                   const QString& fileName)
{
    QFile file(fileName);
    if (!CanBeStored(paths, names) || !kr::OpenForWriting(file))
        return false;
    PathWriter writer(file);
    writer.Count(paths.size());
    for (const auto& [id, contours] : paths) {
        writer.Integer(id);
        WriteName(writer, NameOf(id, names));
        writer.Count(contours.size());
        for (const Contour& points : contours)
            WriteContour(writer, points);
    }
    return true;
}
