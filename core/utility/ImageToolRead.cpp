#include "core/utility/ImageTool.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <iterator>

#include <QByteArray>
#include <QIODevice>
#include <QImageReader>
#include <QtEndian>

namespace {

// Plug-ins that give all pixels of a file or, where it is damaged, grey ones or no picture. Others set only
// the pixels that are there.
constexpr const char* kFormatsThatSetEveryPixel[] = {"png", "jpeg"};
constexpr const char* kIconFormats[] = {"ico", "cur"};

template<std::size_t Count>
bool IsOneOf(const QByteArray& format, const char* const (&formats)[Count])
{
    return std::find(std::begin(formats), std::end(formats), format) != std::end(formats);
}

QSize ClampedSize(qint64 width, qint64 height)
{
    const auto side = [](qint64 pixels) { return static_cast<int>(std::min<qint64>(pixels, INT_MAX)); };
    return {side(width), side(height)};
}

// Fewer than asked for where the device ends.
QByteArray BytesAt(QIODevice& device, qint64 place, int count)
{
    return place <= device.size() && device.seek(place) ? device.read(count) : QByteArray();
}

// PNG file: signature of 8 bytes, length and name of the first chunk, then
//   width    uint32, big-endian
//   height   uint32, big-endian
QSize SizeOfPng(const QByteArray& header)
{
    constexpr int kWidthAt = 16, kHeightAt = 20, kEnd = 24;
    if (header.size() < kEnd || !header.startsWith("\x89PNG\r\n\x1a\n"))
        return {};
    return ClampedSize(qFromBigEndian<quint32>(header.constData() + kWidthAt),
                       qFromBigEndian<quint32>(header.constData() + kHeightAt));
}

// Bitmap: a header that has
//   bits     uint16, little-endian   for each pixel
//   colours  uint32, little-endian   in its palette
// A number of colours that Qt takes for a negative one makes it set a part of the pixels only. Where a PNG
// file has its first chunk's name no number of bits lies.
bool HasPalettePastCounting(const QByteArray& header)
{
    constexpr int kBitsAt = 14, kColorsAt = 32, kEnd = 36;
    constexpr int kMostBitsWithPalette = 8;
    return header.size() >= kEnd &&
           qFromLittleEndian<quint16>(header.constData() + kBitsAt) <= kMostBitsWithPalette &&
           qFromLittleEndian<qint32>(header.constData() + kColorsAt) < 0;
}

// Icon file: a header of 6 bytes, then for each picture an entry of 16 bytes, which ends with
//   place    uint32, little-endian   of the picture's file, counted from the begin of the device
// Qt takes the first picture. If that is a PNG file it may have any size, whatever its entry says.
QByteArray HeaderOfPictureInIcon(QIODevice& device)
{
    constexpr int kPlaceAt = 18, kFirstEntryEnd = 22, kLongestHeader = 40;
    const qint64 begin = device.pos();
    const QByteArray entry = BytesAt(device, begin, kFirstEntryEnd);
    QByteArray header;
    if (entry.size() == kFirstEntryEnd)
        header = BytesAt(device, qFromLittleEndian<quint32>(entry.constData() + kPlaceAt), kLongestHeader);
    device.seek(begin);
    return header;
}

// The size as the file's header tells it, invalid if it does not. BMP files whose rows run from the top tell
// a negative height.
QSize AnnouncedSize(const QImageReader& reader)
{
    const QSize size = reader.size();
    return size == QSize() ? size
                           : ClampedSize(std::abs(qint64(size.width())), std::abs(qint64(size.height())));
}

// What a plug-in does not set of an image that it is handed must not show what the memory held before.
QImage ImageToSet(const QByteArray& format, const QSize& size, QImage::Format pixels)
{
    if (IsOneOf(format, kFormatsThatSetEveryPixel))
        return {};
    QImage image(size, pixels);
    image.fill(Qt::black);
    return image;
}

} // namespace

bool ImageTool::ReadPicture(QIODevice& device, QImage& image, const SizeChoice& choose)
{
    image = QImage();
    if (device.isSequential() || device.isWritable() ||
        !(device.isOpen() || device.open(QIODevice::ReadOnly)))
        return false;
    QImageReader reader(&device);
    const QByteArray format = reader.format(); // before the size, which makes icons forget it
    const QByteArray inIcon = IsOneOf(format, kIconFormats) ? HeaderOfPictureInIcon(device) : QByteArray();
    const QSize sizeInIcon = SizeOfPng(inIcon);
    const QSize announced = sizeInIcon.isValid() ? sizeInIcon : AnnouncedSize(reader);
    const std::optional<QSize> chosen = choose(announced);
    if (!chosen || HasPalettePastCounting(inIcon))
        return false;
    if (*chosen != announced)
        reader.setScaledSize(*chosen);
    QImage decoded = ImageToSet(format, announced, reader.imageFormat());
    if (!reader.read(&decoded))
        return false;
    const bool isAsChosen = decoded.isNull() || decoded.size() == *chosen;
    if (!isAsChosen && !choose(decoded.size()))
        return false;
    image.swap(decoded);
    return true;
}
