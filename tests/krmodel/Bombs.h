#pragma once

#include <QByteArray>

#include "tests/common/PictureFiles.h"
#include "tests/krmodel/PackageBuilder.h"

/// Files of a few megabytes or less that ask for gigabytes.
namespace test {

/// Repetition deflated to about a thousandth, without going through all of it.
class DeflateStream {
public:
    DeflateStream& Add(const QByteArray& bytes, int times = 1)
    {
        // After a full flush what follows refers to nothing before: it may be repeated.
        m_bytes += Deflate(bytes, Z_FULL_FLUSH).repeated(times);
        m_inflatedSize += qint64(bytes.size()) * times;
        return *this;
    }
    QByteArray Finish() const { return m_bytes + QByteArray("\x03\0", 2); }
    qint64 GetInflatedSize() const { return m_inflatedSize; }

private:
    QByteArray m_bytes;
    qint64 m_inflatedSize = 0;
};

constexpr int kBombChunk = 1 << 20;

/// A package of about 3 MB whose model part repeats @p text among its vertices.
/// @param chunks  of 1 MiB
inline QByteArray ZipBomb(const QByteArray& text, int chunks)
{
    DeflateStream model;
    model.Add("<?xml version='1.0'?><model unit='millimeter'><resources><object id='1'><mesh><vertices>")
        .Add(text.repeated(kBombChunk / text.size()), chunks)
        .Add("</vertices></mesh></object></resources></model>");
    ZipEntry part;
    part.name = "3D/3dmodel.model";
    part.deflated = model.Finish();
    part.inflatedSize = quint32(model.GetInflatedSize());
    const QByteArray type = QByteArray("<Default Extension='model' ContentType='") + kModelType + "'/>";
    return ZipBuilder().Add("[Content_Types].xml", ContentTypesText(type)).Add(part).Bytes();
}

/// A whole PNG picture, black, 1 bit a pixel.
inline QByteArray PictureBomb(int width, int height)
{
    constexpr quint32 kAdlerBase = 65521;
    const qint64 size = (qint64(width + 7) / 8 + 1) * height;
    DeflateStream rows;
    rows.Add(QByteArray(kBombChunk, '\0'), int(size / kBombChunk))
        .Add(QByteArray(int(size % kBombChunk), '\0'));
    // The check sum of zeros: its lower half stays 1, its upper half counts them.
    const quint32 adler = quint32(size % kAdlerBase) << 16 | 1;
    // depth, grey, and three methods of which there is one each
    const QByteArray kind("\x01\0\0\0\0", 5);
    return "\x89PNG\r\n\x1a\n" +
           PNGChunk("IHDR" + BigEndian(quint32(width)) + BigEndian(quint32(height)) + kind) +
           PNGChunk("IDAT\x78\x9c" + rows.Finish() + BigEndian(adler)) + PNGChunk("IEND");
}

} // namespace test
