#include "apps/krmodel/Picture.h"

#include <QBuffer>
#include <QImageReader>

namespace krmodel {

namespace {

constexpr qint64 kMostPixels = 16'777'216;

/// Reads the picture's header. The reader would also find formats that a model file has no business with.
class Reader {
public:
    explicit Reader(const QByteArray& bytes)
    {
        m_buffer.setData(bytes);
        m_buffer.open(QIODevice::ReadOnly);
        m_reader.setDevice(&m_buffer);
        m_reader.setDecideFormatFromContent(true);
        m_format = m_reader.format();
    }

    bool IsPng() const { return m_format == "png"; }
    QSize GetSize() const
    {
        if (!IsPng() && m_format != "jpeg")
            return {};
        const QSize size = m_reader.size();
        return size.isEmpty() || qint64(size.width()) * size.height() > kMostPixels ? QSize() : size;
    }
    QImage Decode() { return GetSize().isEmpty() ? QImage() : m_reader.read(); }

private:
    QBuffer m_buffer;
    QImageReader m_reader;
    QByteArray m_format;
};

} // namespace

QSize PictureSize(const QByteArray& bytes)
{
    return Reader(bytes).GetSize();
}

bool IsPng(const QByteArray& bytes)
{
    return Reader(bytes).IsPng();
}

QImage DecodePicture(const QByteArray& bytes)
{
    return Reader(bytes).Decode();
}

QByteArray EncodePng(const QImage& image)
{
    QBuffer png;
    png.open(QIODevice::WriteOnly);
    return image.save(&png, "PNG") ? png.data() : QByteArray();
}

} // namespace krmodel
