#include "tests/common/PictureFiles.h"

#include <algorithm>
#include <cstdlib>

#include <QBuffer>
#include <QtEndian>

#include <gtest/gtest.h>

#include "tests/common/Bytes.h"

namespace test {

namespace {

std::uint32_t Crc32(const QByteArray& bytes)
{
    std::uint32_t crc = 0xffffffff;
    for (const char byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
    }
    return ~crc;
}

} // namespace

QByteArray BigEndian(std::uint32_t number)
{
    QByteArray bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.append(static_cast<char>(number >> shift & 0xff));
    return bytes;
}

QByteArray PNGChunk(const QByteArray& typeAndData)
{
    return BigEndian(static_cast<std::uint32_t>(typeAndData.size() - 4)) + typeAndData +
           BigEndian(Crc32(typeAndData));
}

namespace {

QByteArray LittleEndian(int number)
{
    QByteArray bytes = BigEndian(static_cast<std::uint32_t>(number));
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

QByteArray Word(int number, bool isBigEndian)
{
    const char low = static_cast<char>(number & 0xff), high = static_cast<char>(number >> 8);
    return isBigEndian ? QByteArray().append(high).append(low) : QByteArray().append(low).append(high);
}

QByteArray JPEGSegment(int marker, const QByteArray& content)
{
    return QByteArray("\xff").append(static_cast<char>(marker)) + Word(content.size() + 2, true) + content;
}

// The coded coefficients of a JPEG file.
class JPEGBits {
public:
    void Write(unsigned bits, int count)
    {
        for (int i = count - 1; i >= 0; --i) {
            m_byte = m_byte << 1 | (bits >> i & 1);
            if (++m_bitCount % 8 == 0)
                Flush();
        }
    }
    QByteArray Finish()
    {
        while (m_bitCount % 8 != 0)
            Write(1, 1);
        return m_bytes;
    }

private:
    void Flush()
    {
        m_bytes.append(static_cast<char>(m_byte));
        if (m_byte == 0xff)
            m_bytes.append('\0');
        m_byte = 0;
    }

    QByteArray m_bytes;
    unsigned m_byte = 0;
    int m_bitCount = 0;
};

// A mean by its difference to the one before: how many bits it has, as a code of 4 bits, and these. Then the
// code of 1 bit for "no more in this tile".
void WriteTile(JPEGBits& bits, int difference)
{
    int length = 0;
    while (std::abs(difference) >> length != 0)
        ++length;
    bits.Write(static_cast<unsigned>(length), 4);
    bits.Write(static_cast<unsigned>(difference > 0 ? difference : difference + (1 << length) - 1), length);
    bits.Write(0, 1);
}

QByteArray TileBits(const std::vector<Ink>& tiles)
{
    JPEGBits bits;
    int means[4] = {0, 0, 0, 0};
    for (const Ink& ink : tiles) {
        // Stored inverted, as programs for print do, and around 128.
        const int wanted[4] = {127 - ink.cyan, 127 - ink.magenta, 127 - ink.yellow, 127 - ink.black};
        for (int i = 0; i < 4; ++i) {
            WriteTile(bits, wanted[i] - means[i]);
            means[i] = wanted[i];
        }
    }
    return bits.Finish();
}

constexpr int kBMPWidthAt = 18, kBMPHeightAt = 22;

} // namespace

QImage RandomPicture(std::mt19937& random, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, 0xff000000 | static_cast<QRgb>(random()));
    return image;
}

QImage RandomPicture(int width, int height, unsigned seed)
{
    std::mt19937 random(seed);
    return RandomPicture(random, width, height);
}

QImage FourColors()
{
    QImage image(2, 2, QImage::Format_RGB32);
    image.setPixel(0, 0, qRgb(255, 0, 0));
    image.setPixel(1, 0, qRgb(0, 255, 0));
    image.setPixel(0, 1, qRgb(0, 0, 255));
    image.setPixel(1, 1, qRgb(255, 255, 255));
    return image;
}

QImage PlainPicture(int width, int height, QRgb color)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

QImage GreyPicture(int width, const std::vector<int>& levels)
{
    QImage image(width, static_cast<int>(levels.size()) / width, QImage::Format_RGB32);
    for (int i = 0; i < static_cast<int>(levels.size()); ++i) {
        const int level = levels[static_cast<std::size_t>(i)];
        image.setPixel(i % width, i / width, qRgb(level, level, level));
    }
    return image;
}

QByteArray Encoded(const QImage& image, const char* format, int quality)
{
    QBuffer file;
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(image.save(&file, format, quality)) << format;
    return file.data();
}

QByteArray PNGThatClaims(std::uint32_t width, std::uint32_t height)
{
    return Bytes("\x89PNG\r\n\x1a\n") +
           PNGChunk("IHDR" + BigEndian(width) + BigEndian(height) + Bytes("\x08\x02\x00\x00\x00")) +
           PNGChunk("IDAT") + PNGChunk("IEND");
}

QByteArray BMPThatClaims(int width, int height)
{
    return Encoded(RandomPicture(2, 2), "BMP")
        .replace(kBMPWidthAt, 4, LittleEndian(width))
        .replace(kBMPHeightAt, 4, LittleEndian(height));
}

QByteArray WithRowsFromTheTop(const QByteArray& bmp)
{
    const int height = qFromLittleEndian<qint32>(bmp.constData() + kBMPHeightAt);
    return QByteArray(bmp).replace(kBMPHeightAt, 4, LittleEndian(-height));
}

QByteArray CutShort(const QByteArray& bytes)
{
    return bytes.left(bytes.size() * 3 / 4);
}

QByteArray IconOf(const std::vector<QByteArray>& pngs)
{
    constexpr int kHeaderSize = 6, kEntrySize = 16;
    const int count = static_cast<int>(pngs.size());
    QByteArray directory = Bytes("\0\0\1\0") + Word(count, false), files;
    for (const QByteArray& png : pngs) {
        const int place = kHeaderSize + count * kEntrySize + files.size();
        directory += Bytes("\x10\x10\0\0\1\0\x20\0") + LittleEndian(png.size()) + LittleEndian(place);
        files += png;
    }
    return directory + files;
}

QByteArray TGA(const QImage& image, Footer footer)
{
    QByteArray bytes = Bytes("\0\0\2\0\0\0\0\0\0\0\0\0") + Word(image.width(), false) +
                       Word(image.height(), false) + Bytes("\x18\0");
    for (int y = image.height() - 1; y >= 0; --y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            for (const int channel : {qBlue(pixel), qGreen(pixel), qRed(pixel)})
                bytes.append(static_cast<char>(channel));
        }
    return footer == Footer::None ? bytes : bytes + QByteArray(8, '\0') + Bytes("TRUEVISION-XFILE.\0");
}

QByteArray CMYKJPEG(const std::vector<Ink>& tiles)
{
    const QByteArray adobe = Bytes("Adobe\0\x64\0\0\0\0\0"); // colours as they are
    const QByteArray quantization = '\0' + QByteArray(64, '\x08');
    QByteArray frame = '\x08' + Word(8, true) + Word(8 * static_cast<int>(tiles.size()), true) + '\x04';
    QByteArray scan("\x04");
    for (char component = 1; component <= 4; ++component) {
        frame += component + Bytes("\x11\0");
        scan += component + Bytes("\0");
    }
    // Codes of 4 bits for 0 to 9 bits, and one code of 1 bit.
    const QByteArray means = Bytes("\0\0\0\0\x0a\0\0\0\0\0\0\0\0\0\0\0\0\0\1\2\3\4\5\6\7\x08\x09");
    const QByteArray others = Bytes("\x10\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0");
    return Bytes("\xff\xd8") + JPEGSegment(0xee, adobe) + JPEGSegment(0xdb, quantization) +
           JPEGSegment(0xc0, frame) + JPEGSegment(0xc4, means) + JPEGSegment(0xc4, others) +
           JPEGSegment(0xda, scan + Bytes("\0\x3f\0")) + TileBits(tiles) + Bytes("\xff\xd9");
}

} // namespace test
