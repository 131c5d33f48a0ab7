#pragma once

#include <map>
#include <string>
#include <vector>

#include <QString>

#include "core/math/Vector2D.h"
#include "fileformat/KRCoreFileFormatExport.h"

class QByteArray;

/// Reads and writes path files: named sets of polylines in the plane. In spite of its name the format is no
/// DXF drawing. Keeps nothing between calls: any operation may run on several threads at once for different
/// files and maps.
///
/// The file, integers of 32 bits with sign and reals of 64 bits, all little-endian, without gaps:
///
///     set count
///     for each set, by ascending id
///         id
///         name length                 bytes that follow, 0 for no name
///         name                        UTF-16, low byte first, as base64 text
///         contour count
///         for each contour
///             point count
///             x, y for each point
class KRCORE_FILEFORMAT_EXPORT DXFPathFile {
public:
    /// A polyline, closed when its last point is its first one.
    using Contour = std::vector<Vector2D<double>>;
    /// The contours of each set by its id.
    using Paths = std::map<int, std::vector<Contour>>;

    /// Writes the path sets @p paths into the file @p fileName, replacing it. Coordinates are stored bit
    /// for bit.
    /// @param names  by the id of their set, UTF-8; what is no UTF-8 becomes U+FFFD, a byte-order mark at the
    ///               beginning is dropped. A set that is not in here has no name, a name without a set is not
    ///               written
    /// @return false when the file cannot be opened for writing, and, with nothing touched, for what the
    ///         format cannot count: more than 2,147,483,647 sets, contours of a set or points of a contour,
    ///         or a set's name of more than 100,000,000 bytes. Write errors are not reported
    [[nodiscard]] static bool WriteDXFPathFile(const Paths& paths, const std::map<int, std::string>& names,
                                               const QString& fileName);

    /// Reads the path file @p fileName. Both maps, @p paths and @p names, are emptied first and stay
    /// empty on failure and when an exception passes.
    ///
    /// A count of 0 or less means that nothing follows on its level. Of sets with the same id the last one
    /// counts. What stands behind the last set is passed over.
    /// @param names  an entry for each set, empty for one without a name; read as
    ///               GetUnicodeStringFromBase64String() does
    /// @return false when the file cannot be opened, is no plain file, or ends before its counts are
    ///         fulfilled
    /// @throws std::bad_alloc when memory runs out; it grows with the file's bytes, never with a count alone
    [[nodiscard]] static bool ReadDXFPathFile(Paths& paths, std::map<int, QString>& names,
                                              const QString& fileName);

    /// The UTF-16 code units of @p text, two bytes each, low byte first, as base64 with padding. Any units:
    /// halves of surrogate pairs and zeros too.
    static QByteArray GetBase64StringFromUnicodeString(const QString& text);

    /// The text that GetBase64StringFromUnicodeString() stored as @p base64. An odd last byte is a unit of
    /// its own, with the high byte 0. Characters that are not of the base64 alphabet are passed over.
    static QString GetUnicodeStringFromBase64String(const QByteArray& base64);
};
