#pragma once

#include <cstdint>
#include <vector>

#include <QByteArray>
#include <QFile>
#include <QString>

#include <quazip.h>

namespace kr::package3mf {

/// A QByteArray holds no more: its header and the NUL at its end count within 31 bits too.
constexpr int kLargestByteArray = 2'147'483'615;

/// The entries of a zip archive, which is opened once. What an entry holds is what a QuaZipFile reads from
/// it.
class PackageArchive {
public:
    /// @param largest  no entry that inflates to more bytes is read
    explicit PackageArchive(const QString& fileName, int largest = kLargestByteArray);

    struct Entry {
        QString name;
        // Of the first entry with this name.
        std::uint64_t placeInDirectory = 0;
        std::uint64_t number = 0;
    };
    /// In the order of the central directory; none for a file that is missing or no archive.
    const std::vector<Entry>& Entries() const { return m_entries; }

    enum class Outcome { Complete, NotOpened, TooLarge };
    /// Reads all that the first entry of this name inflates to; what came out before an error is complete.
    /// An entry without a name, or with one that begins with a slash, cannot be opened.
    Outcome Read(const Entry& entry, QByteArray& bytes);

private:
    void List();
    bool GoTo(const Entry& entry);
    bool InflateAtOnce(const QuaZipFileInfo64& info, QByteArray& bytes);
    bool HasUsualSizes(std::uint64_t compressed, std::uint64_t inflated) const;
    QByteArray ReadCompressed(int size);
    Outcome ReadInPieces(QByteArray& bytes);

    QFile m_file;
    QuaZip m_zip;
    std::vector<Entry> m_entries;
    int m_largest;
};

} // namespace kr::package3mf
