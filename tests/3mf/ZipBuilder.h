#pragma once

#include <optional>
#include <vector>

#include <QByteArray>
#include <QtEndian>

#include <zlib.h>

namespace test {

/// One entry of an archive as it is, or as it claims to be.
struct ZipEntry {
    QByteArray name;
    QByteArray content;
    quint16 method = Z_DEFLATED; ///< the content is deflated for this one only
    quint16 flags = 0;
    std::optional<quint32> checkSum = {};
    std::optional<quint32> inflatedSize = {};
    std::optional<quint32> compressedSize = {};
    std::optional<quint32> signature = {};   ///< of the header in front of the content
    std::optional<QByteArray> deflated = {}; ///< instead of the content; what of it is inflated must be told
};

constexpr quint16 kIsEncrypted = 1;
constexpr quint16 kNameIsUtf8 = 0x800;

inline QByteArray Deflate(const QByteArray& content, int flush = Z_FINISH, int level = Z_DEFAULT_COMPRESSION)
{
    z_stream stream = {};
    deflateInit2(&stream, level, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    QByteArray plain = content;
    QByteArray deflated(static_cast<int>(deflateBound(&stream, static_cast<uLong>(content.size()))) + 16,
                        '\0');
    stream.next_in = reinterpret_cast<Bytef*>(plain.data());
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = reinterpret_cast<Bytef*>(deflated.data());
    stream.avail_out = static_cast<uInt>(deflated.size());
    deflate(&stream, flush);
    deflated.resize(static_cast<int>(stream.total_out));
    deflateEnd(&stream);
    return deflated;
}

/// Writes archives byte by byte, valid and invalid ones.
class ZipBuilder {
public:
    ZipBuilder& Add(const QByteArray& name, const QByteArray& content)
    {
        ZipEntry entry;
        entry.name = name;
        entry.content = content;
        return Add(entry);
    }

    // header in front of the content: signature, then what the directory repeats, name
    ZipBuilder& Add(const ZipEntry& entry)
    {
        const QByteArray stored = entry.deflated               ? *entry.deflated
                                  : entry.method == Z_DEFLATED ? Deflate(entry.content)
                                                               : entry.content;
        const QByteArray common = CommonFields(entry, stored.size());
        const auto place = static_cast<quint32>(m_contents.size());
        m_contents += Number<quint32>(entry.signature.value_or(0x04034B50)) + common + entry.name + stored;
        // comment size, disk, attributes inside and outside, place
        m_directory += Number<quint32>(0x02014B50) + Number<quint16>(20) + common + Number<quint16>(0) +
                       Number<quint16>(0) + Number<quint16>(0) + Number<quint32>(0) + Number(place) +
                       entry.name;
        ++m_count;
        return *this;
    }

    QByteArray Bytes(const QByteArray& comment = {}) const
    {
        return m_contents + m_directory + Number<quint32>(0x06054B50) + Number<quint16>(0) +
               Number<quint16>(0) + Number(m_count) + Number(m_count) +
               Number(static_cast<quint32>(m_directory.size())) +
               Number(static_cast<quint32>(m_contents.size())) +
               Number(static_cast<quint16>(comment.size())) + comment;
    }

private:
    template<class Integer>
    static QByteArray Number(Integer value)
    {
        QByteArray bytes(sizeof value, '\0');
        qToLittleEndian(value, bytes.data());
        return bytes;
    }

    // version, flags, method, time, date, check sum, both sizes, sizes of the name and of what is extra
    static QByteArray CommonFields(const ZipEntry& entry, int storedSize)
    {
        const auto* const data = reinterpret_cast<const Bytef*>(entry.content.constData());
        const auto checkSum = static_cast<quint32>(crc32(0, data, static_cast<uInt>(entry.content.size())));
        return Number<quint16>(20) + Number(entry.flags) + Number(entry.method) + Number<quint16>(0) +
               Number<quint16>(0x5421) + Number(entry.checkSum.value_or(checkSum)) +
               Number(entry.compressedSize.value_or(static_cast<quint32>(storedSize))) +
               Number(entry.inflatedSize.value_or(static_cast<quint32>(entry.content.size()))) +
               Number(static_cast<quint16>(entry.name.size())) + Number<quint16>(0);
    }

    QByteArray m_contents;
    QByteArray m_directory;
    quint16 m_count = 0;
};

} // namespace test
