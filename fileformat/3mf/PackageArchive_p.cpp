#include "fileformat/3mf/PackageArchive_p.h"

#include <memory>

#include <QHash>

#include <libdeflate.h>
#include <quazipfile.h>
#include <quazipfileinfo.h>
#include <unzip.h>

#include "core/common/FileName_p.h"
#include "core/common/LargePages_p.h"

namespace kr::package3mf {

namespace {

// What a byte of deflated data makes at most: a match of 258 bytes takes two bits.
constexpr std::uint64_t kLargestRatio = 1032;

// As QIODevice::readAll() reads a QuaZipFile. What an error takes with it is the piece in which it occurs.
constexpr int kPieceSize = 16 * 1024;

// QuaZip never returns from such an entry when it is cut short. No package has one: they are stored or
// deflated.
constexpr int kBzip2 = 12;

// Names in an archive are relative. QuaZip opens no entry by another one.
bool HasNameToOpenBy(const QString& name)
{
    return !name.isEmpty() && !name.startsWith(QLatin1Char('/'));
}

struct FreeDecompressor {
    void operator()(libdeflate_decompressor* decompressor) const
    {
        libdeflate_free_decompressor(decompressor);
    }
};

// False unless the deflated bytes make exactly as many as there is room for.
bool Inflate(const QByteArray& deflated, QByteArray& bytes)
{
    const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(
        libdeflate_alloc_decompressor());
    return decompressor && libdeflate_deflate_decompress(decompressor.get(), deflated.constData(),
                                                         static_cast<std::size_t>(deflated.size()),
                                                         bytes.data(), static_cast<std::size_t>(bytes.size()),
                                                         nullptr) == LIBDEFLATE_SUCCESS;
}

} // namespace

PackageArchive::PackageArchive(const QString& fileName, int largest)
    : m_file(fileName), m_zip(&m_file), m_largest(largest)
{
    if (IsPlainFile(fileName) && m_file.open(QIODevice::ReadOnly) && m_zip.open(QuaZip::mdUnzip))
        List();
}

void PackageArchive::List()
{
    QHash<QString, std::size_t> first;
    QuaZipFileInfo64 info;
    for (bool isEntry = m_zip.goToFirstFile(); isEntry; isEntry = m_zip.goToNextFile()) {
        unz64_file_pos position = {};
        if (!m_zip.getCurrentFileInfo(&info) || unzGetFilePos64(m_zip.getUnzFile(), &position) != UNZ_OK) {
            m_entries.clear();
            return;
        }
        m_entries.push_back({info.name, position.pos_in_zip_directory, position.num_of_file});
        const auto known = first.constFind(info.name);
        if (known == first.constEnd())
            first.insert(info.name, m_entries.size() - 1);
        else
            m_entries.back() = m_entries[*known];
    }
}

bool PackageArchive::GoTo(const Entry& entry)
{
    unz64_file_pos position = {};
    position.pos_in_zip_directory = entry.placeInDirectory;
    position.num_of_file = entry.number;
    // QuaZip knows of a current file only when it went to one itself.
    return m_zip.goToFirstFile() && unzGoToFilePos64(m_zip.getUnzFile(), &position) == UNZ_OK;
}

PackageArchive::Outcome PackageArchive::Read(const Entry& entry, QByteArray& bytes)
{
    QuaZipFileInfo64 info;
    const bool isThere = HasNameToOpenBy(entry.name) && GoTo(entry) && m_zip.getCurrentFileInfo(&info);
    if (!isThere || info.method == kBzip2)
        return Outcome::NotOpened;
    return InflateAtOnce(info, bytes) ? Outcome::Complete : ReadInPieces(bytes);
}

// The usual entry by the faster road, 2.5 times as fast. False for all others, and for whatever is wrong with
// the entry: which bytes then come out is up to the other road. The check sum counts on neither.
bool PackageArchive::InflateAtOnce(const QuaZipFileInfo64& info, QByteArray& bytes)
{
    if (info.method != Z_DEFLATED || info.isEncrypted() ||
        !HasUsualSizes(info.compressedSize, info.uncompressedSize))
        return false;
    const QByteArray deflated = ReadCompressed(static_cast<int>(info.compressedSize));
    if (deflated.isEmpty())
        return false;
    bytes = QByteArray(static_cast<int>(info.uncompressedSize), Qt::Uninitialized);
    AdviseLargePages(bytes.data(), static_cast<std::size_t>(bytes.size()));
    return Inflate(deflated, bytes);
}

// Sizes are claims: memory for them is asked for only when the archive is large enough to make them true.
bool PackageArchive::HasUsualSizes(std::uint64_t compressed, std::uint64_t inflated) const
{
    return compressed < static_cast<std::uint64_t>(m_file.size()) &&
           compressed <= static_cast<std::uint64_t>(m_largest) && inflated > 0 &&
           inflated <= static_cast<std::uint64_t>(m_largest) && inflated <= compressed * kLargestRatio;
}

// Empty when the entry cannot be opened or is cut.
QByteArray PackageArchive::ReadCompressed(int size)
{
    QuaZipFile file(&m_zip);
    int method = 0;
    int level = 0;
    constexpr bool kIsRaw = true;
    if (!file.open(QIODevice::ReadOnly, &method, &level, kIsRaw))
        return {};
    // Straight from the file: QuaZip would copy byte by byte and sum them up.
    QByteArray deflated(size, Qt::Uninitialized);
    const auto place = static_cast<qint64>(unzGetCurrentFileZStreamPos64(m_zip.getUnzFile()));
    if (!m_file.seek(place) || m_file.read(deflated.data(), size) != size)
        deflated.clear();
    return deflated;
}

PackageArchive::Outcome PackageArchive::ReadInPieces(QByteArray& bytes)
{
    bytes.clear();
    QuaZipFile file(&m_zip);
    if (!file.open(QIODevice::ReadOnly))
        return Outcome::NotOpened;
    char piece[kPieceSize];
    for (;;) {
        const auto size = static_cast<int>(file.read(piece, kPieceSize));
        if (size <= 0)
            return Outcome::Complete;
        if (size > m_largest - bytes.size())
            return Outcome::TooLarge;
        bytes.append(piece, size);
    }
}

} // namespace kr::package3mf
