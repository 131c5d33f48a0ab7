#include "apps/krmodel/Picture.h"

#include <algorithm>
#include <new>

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

void RequireRoomForPixels(QIODevice& picture, const std::function<bool(const QSize& size)>& isWanted)
{
    // At most 8 as decoded and 4 as used; and what decoders take for themselves.
    constexpr qint64 kBytesPerPixel = 12, kOthers = qint64(16) << 20;
    // A call of its own: the compiler may leave out a new expression of which nothing is used.
    const auto take = [](qint64 bytes) { ::operator delete(::operator new(size_t(bytes))); };
    take(kOthers);
    if (!(picture.isOpen() || picture.open(QIODevice::ReadOnly)) || !picture.seek(0))
        return;
    const QSize size = QImageReader(&picture).size();
    if (!size.isEmpty() && isWanted(size))
        take(kOthers + kBytesPerPixel * size.width() * size.height());
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
