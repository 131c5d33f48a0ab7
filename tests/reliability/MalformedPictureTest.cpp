#include <limits>
#include <sstream>

#include <QBuffer>
#include <QtEndian>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/image/ImageFile.h"
#include "tests/common/Bytes.h"
#include "tests/common/FilledMesh.h"
#include "tests/common/PictureFiles.h"
#include "tests/reliability/MalformedRows.h"

namespace {

using namespace test;

constexpr std::size_t kRowCount = 97;

constexpr char kNoPicture[] = "code 2";
// FourColors() in all formats that lose nothing.
constexpr char kGood[] = "2x2 ff0000 00ff00 0000ff ffffff";
constexpr char kBlack[] = "2x2 000000";
constexpr char kGrey[] = "16x8 808080";

/// The size and the pixels, row by row, or one for all that are alike.
std::string TextOf(const QImage& image)
{
    std::ostringstream text;
    text << image.width() << 'x' << image.height();
    bool isPlain = true;
    for (int i = 0; i < image.width() * image.height(); ++i)
        isPlain = isPlain && image.pixel(i % image.width(), i / image.width()) == image.pixel(0, 0);
    const int shown = isPlain ? 1 : image.width() * image.height();
    for (int i = 0; i < shown; ++i) {
        const QRgb pixel = image.pixel(i % image.width(), i / image.width()) & 0xffffff;
        text << ' ' << QByteArray::number(pixel, 16).rightJustified(6, '0').constData();
    }
    return text.str();
}

/// A grid of top and bottom, two triangles a cell each, and the walls around.
void ExpectRelief(const Mesh& mesh, const QImage& image)
{
    const int columns = image.width() - 1, rows = image.height() - 1;
    EXPECT_EQ(mesh.GetVertexNum(), 2 * image.width() * image.height());
    EXPECT_EQ(mesh.GetFaceNum(), 4 * columns * rows + 4 * (columns + rows));
}

/// The picture, or the code of what failed; and that a relief is made of it exactly when it has 2 pixels a
/// side.
std::string Read(const QString& path)
{
    QImage image = PlainPicture(3, 3, 0);
    const int code = ImageFile::CheckImageAndParse(path, image);
    Mesh mesh = FilledMesh();
    const bool isRelief = ImageFile::LoadFile(path, mesh, 10, 10, 0, true, 1, 2, 100);
    EXPECT_EQ(isRelief, image.width() >= 2 && image.height() >= 2);
    if (isRelief)
        ExpectRelief(mesh, image);
    else
        ExpectFilledMesh(mesh);
    EXPECT_EQ(code != 0, image.isNull());
    return code == 0 ? TextOf(image) : "code " + std::to_string(code);
}

QByteArray Chunk(const QByteArray& type, const QByteArray& data)
{
    return PNGChunk(type + data);
}

const QByteArray kSignature = Bytes("\x89PNG\r\n\x1a\n");
const QByteArray kEnd = Chunk("IEND", "");
// A filter and the pixels, for each row.
const QByteArray kRows = Bytes("\0\xff\0\0\0\xff\0\0\0\0\xff\xff\xff\xff");

/// Depth, colour type, compression, filter, interlace.
QByteArray Header(const QByteArray& kind = Bytes("\x08\2\0\0\0"), quint32 width = 2, quint32 height = 2)
{
    return Chunk("IHDR", BigEndian(width) + BigEndian(height) + kind);
}

QByteArray Deflated(const QByteArray& rows)
{
    // Qt's own puts the size in front.
    return qCompress(rows).mid(4);
}

QByteArray Data(const QByteArray& rows = kRows)
{
    return Chunk("IDAT", Deflated(rows));
}

QByteArray Png()
{
    return kSignature + Header() + Data() + kEnd;
}

QByteArray WithHeader(const QByteArray& header)
{
    return kSignature + header + Data() + kEnd;
}

QByteArray WithData(const QByteArray& data)
{
    return kSignature + Header() + data + kEnd;
}

/// A chunk whose check sum is wrong.
QByteArray Damaged(QByteArray chunk)
{
    chunk[chunk.size() - 1] = static_cast<char>(chunk[chunk.size() - 1] ^ 1);
    return chunk;
}

MalformedRows PngHeaders()
{
    return {
        {"an empty file", "", kNoPicture},
        {"text", "a picture of a house", kNoPicture},
        {"a file of zeros", QByteArray(300, '\0'), kNoPicture},
        {"half a signature", kSignature.left(4), kNoPicture},
        {"a signature alone", kSignature, kNoPicture},
        {"line ends of the signature translated", Png().replace("\r\n", "\n"), kNoPicture},
        {"a signature of seven bits a byte", Png().replace(0, 1, "\x09"), kNoPicture},
        {"a byte in front of the signature", '\0' + Png(), kNoPicture},
        {"no header", WithHeader(""), kNoPicture},
        {"a header's wrong check sum", WithHeader(Damaged(Header())), kNoPicture},
        {"a header less a byte", WithHeader(Header(Bytes("\x08\2\0\0"))), kNoPicture},
        {"a width of 0", WithHeader(Header(Bytes("\x08\2\0\0\0"), 0, 2)), kNoPicture},
        {"a height of 0", WithHeader(Header(Bytes("\x08\2\0\0\0"), 2, 0)), kNoPicture},
        {"a width of 2^31", WithHeader(Header(Bytes("\x08\2\0\0\0"), 0x80000000, 2)), kNoPicture},
        {"the largest width", WithHeader(Header(Bytes("\x08\2\0\0\0"), 0x7fffffff, 2)), kNoPicture},
        {"a row of pixels more than may be", PNGThatClaims(32768, 16385), kNoPicture},
        {"sides whose product wraps to 0", PNGThatClaims(65536, 65536), kNoPicture},
        {"a depth of 0", WithHeader(Header(Bytes("\0\2\0\0\0"))), kNoPicture},
        {"a depth of 3", WithHeader(Header(Bytes("\3\0\0\0\0"))), kNoPicture},
        {"a depth that its colour cannot have", WithHeader(Header(Bytes("\4\2\0\0\0"))), kNoPicture},
        {"a colour type that nobody knows", WithHeader(Header(Bytes("\x08\5\0\0\0"))), kNoPicture},
        {"a compression that nobody knows", WithHeader(Header(Bytes("\x08\2\1\0\0"))), kNoPicture},
        {"a filter method that nobody knows", WithHeader(Header(Bytes("\x08\2\0\1\0"))), kNoPicture},
        {"an interlace method that nobody knows", WithHeader(Header(Bytes("\x08\2\0\0\2"))), kNoPicture},
        {"rows that are not interlaced as the header says", WithHeader(Header(Bytes("\x08\2\0\0\1"))),
         kNoPicture},
        {"two headers", WithHeader(Header() + Header()), kNoPicture},
        {"a palette that is not there", WithHeader(Header(Bytes("\x08\3\0\0\0"))), kNoPicture},
        {"a palette of two numbers and a half",
         WithHeader(Header(Bytes("\x08\3\0\0\0")) + Chunk("PLTE", "12")), kNoPicture},
    };
}

MalformedRows PngChunks()
{
    const QByteArray bodyless = kSignature + Header();
    return {
        {"no pixels", WithData(""), kNoPicture},
        {"an empty chunk of pixels", WithData(Chunk("IDAT", "")), kNoPicture},
        {"a wrong check sum of the pixels", WithData(Damaged(Data())), kNoPicture},
        {"pixels that are not compressed", WithData(Chunk("IDAT", kRows)), kNoPicture},
        {"compressed pixels without their end", WithData(Chunk("IDAT", Deflated(kRows).left(8))), kNoPicture},
        {"a row too few", WithData(Data(kRows.left(7))), kNoPicture},
        {"a row too many", WithData(Data(kRows + kRows.left(7))), kGood},
        {"a row of a filter that nobody knows", WithData(Data(QByteArray(kRows).replace(7, 1, "\5"))),
         kNoPicture},
        {"pixels whose chunk ends behind the file",
         bodyless + Bytes("\x7f\xff\xff\xffIDAT") + Deflated(kRows), kNoPicture},
        {"a chunk's length beyond 31 bits", bodyless + Bytes("\xff\xff\xff\xffIDAT") + Deflated(kRows),
         kNoPicture},
        {"a chunk's type of digits", WithData(Chunk("1234", "x") + Data()), kNoPicture},
        {"a necessary chunk that nobody knows", WithData(Chunk("ABCD", "x") + Data()), kNoPicture},
        {"an unnecessary chunk with a wrong check sum", WithData(Damaged(Chunk("teXt", "x")) + Data()),
         kGood},
        {"a gamma of three bytes", WithData(Chunk("gAMA", "abc") + Data()), kGood},
        {"nothing behind the pixels", bodyless + Data(), kNoPicture},
        {"bytes behind the end", Png() + "surplus", kGood},
        {"a second picture behind the end", Png() + Png(), kGood},
        {"a picture of one pixel's width",
         kSignature + Header(Bytes("\x08\2\0\0\0"), 1, 2) + Data(Bytes("\0\xff\0\0\0\0\xff\0")) + kEnd,
         "1x2 ff0000 00ff00"},
    };
}

MalformedRows Bitmaps()
{
    constexpr int kSizeAt = 2, kInfoSizeAt = 14, kPlanesAt = 26, kBitsAt = 28, kCompressionAt = 30,
                  kPixelsAt = 54;
    const QByteArray good = Encoded(FourColors(), "BMP");
    return {
        {"a bitmap's first letters wrong", Overwritten(good, 0, "BN"), kNoPicture},
        {"a bitmap cut within its first header", good.left(10), kNoPicture},
        {"a bitmap cut within its second header", good.left(30), kNoPicture},
        {"a bitmap of half a row", good.left(kPixelsAt + 4), kBlack},
        {"a bitmap of one of two rows", good.left(kPixelsAt + 8), "2x2 000000 000000 0000ff ffffff"},
        {"a bitmap of no width", BMPThatClaims(0, 2), kNoPicture},
        {"a bitmap of a negative width", BMPThatClaims(-2, 2), kNoPicture},
        {"a bitmap of no height", BMPThatClaims(2, 0), kNoPicture},
        {"a bitmap's rows from the top", WithRowsFromTheTop(good), "2x2 0000ff ffffff ff0000 00ff00"},
        {"a bitmap of more pixels than may be", BMPThatClaims(32768, 16385), kNoPicture},
        {"a bitmap of the lowest height", BMPThatClaims(2, std::numeric_limits<int>::min()), kNoPicture},
        {"a bitmap of no planes", Overwritten(good, kPlanesAt, Bytes("\0\0")), kNoPicture},
        {"a bitmap of 0 bits", Overwritten(good, kBitsAt, Bytes("\0\0")), kNoPicture},
        {"a bitmap of 3 bits", Overwritten(good, kBitsAt, Bytes("\3\0")), kNoPicture},
        {"a bitmap of 65535 bits", Overwritten(good, kBitsAt, Bytes("\xff\xff")), kNoPicture},
        {"a bitmap's compression that nobody knows", Overwritten(good, kCompressionAt, Bytes("\x63\0\0\0")),
         kNoPicture},
        {"a bitmap compressed for other pixels", Overwritten(good, kCompressionAt, Bytes("\1\0\0\0")),
         kNoPicture},
        {"a second header of 13 bytes", Overwritten(good, kInfoSizeAt, Bytes("\x0d\0\0\0")), kNoPicture},
        {"a bitmap that says it has no bytes", Overwritten(good, kSizeAt, Bytes("\0\0\0\0")), kGood},
        {"bytes behind a bitmap", good + "surplus", kGood},
    };
}

/// The picture without its segments of this marker.
QByteArray WithoutSegments(QByteArray jpeg, char marker)
{
    const QByteArray begin = QByteArray("\xff").append(marker);
    for (int at = jpeg.indexOf(begin); at >= 0; at = jpeg.indexOf(begin))
        jpeg.remove(at, 2 + qFromBigEndian<quint16>(jpeg.constData() + at + 2));
    return jpeg;
}

MalformedRows Photographs()
{
    const QByteArray good = Encoded(PlainPicture(16, 8, qRgb(128, 128, 128)), "JPG");
    // marker, length, precision, height, width, components
    const int frame = good.indexOf("\xff\xc0");
    const int scan = good.indexOf("\xff\xda");
    return {
        {"a photograph's first marker alone", good.left(2), kNoPicture},
        {"a photograph without its first marker", good.mid(2), kNoPicture},
        {"a photograph cut in front of its frame", good.left(frame), kNoPicture},
        {"a photograph cut in front of its scan", good.left(scan), kNoPicture},
        {"a photograph cut within its scan", good.left(good.size() - 4), kGrey},
        {"a photograph without its last marker", good.left(good.size() - 2), kGrey},
        {"bytes behind a photograph", good + "surplus", kGrey},
        {"a photograph of no width", Overwritten(good, frame + 7, Bytes("\0\0")), kNoPicture},
        {"a photograph of no height", Overwritten(good, frame + 5, Bytes("\0\0")), kNoPicture},
        {"a photograph of more pixels than may be", Overwritten(good, frame + 5, Bytes("\xff\xdc\xff\xdc")),
         kNoPicture},
        {"a photograph of 7 bits a channel", Overwritten(good, frame + 4, "\7"), kNoPicture},
        {"a photograph of no channels", Overwritten(good, frame + 9, Bytes("\0")), kNoPicture},
        {"a photograph without quantization", WithoutSegments(good, '\xdb'), kNoPicture},
        {"a frame of a length too short", Overwritten(good, frame + 2, Bytes("\0\1")), kNoPicture},
        {"two frames", good.left(scan) + good.mid(frame, scan - frame) + good.mid(scan), kNoPicture},
        {"a frame of a kind that is not read", Overwritten(good, frame + 1, "\xc3"), kNoPicture},
    };
}

MalformedRows TaggedPictures()
{
    const QByteArray good = Encoded(FourColors(), "TIFF");
    return {
        {"tags: a header of letters that are no byte order", Overwritten(good, 0, "IM"), kNoPicture},
        {"tags: the other byte order than the numbers have",
         Overwritten(good, 0, good.startsWith('I') ? "MM" : "II"), kNoPicture},
        {"tags: a version that nobody knows",
         Overwritten(good, 2, good.startsWith('I') ? Bytes("\x63\0") : Bytes("\0\x63")), kNoPicture},
        {"tags: a header alone", good.left(8), kNoPicture},
        {"tags: half a header", good.left(5), kNoPicture},
        {"tags: no directory", Overwritten(good, 4, Bytes("\0\0\0\0")), kNoPicture},
        {"tags: a directory behind the file", Overwritten(good, 4, Bytes("\x7f\x7f\x7f\x7f")), kNoPicture},
        {"tags: bytes behind the file", good + "surplus", kGood},
    };
}

MalformedRows Targas()
{
    constexpr int kTypeAt = 2, kWidthAt = 12, kBitsAt = 16;
    const QByteArray good = TGA(FourColors(), Footer::OfVersion2);
    return {
        {"targa: a header cut short", good.left(10), kNoPicture},
        {"targa: a header alone", good.left(18), kNoPicture},
        {"targa: a kind of picture that nobody knows", Overwritten(good, kTypeAt, "\x63"), kNoPicture},
        {"targa: a file of zeros but for its footer", QByteArray(26, '\0') + good.right(26), kNoPicture},
        {"targa: more pixels than may be", Overwritten(good, kWidthAt, Bytes("\0\x80\1\x40")), kNoPicture},
        {"targa: a footer that points behind the file",
         Overwritten(good, good.size() - 26, QByteArray(8, '\x7f')), kGood},
        {"targa: 9 bits a pixel", Overwritten(good, kBitsAt, "\x09"), kNoPicture},
    };
}

} // namespace

TEST(MalformedPicture, DamagedPngHeadersGiveTheirResults)
{
    ExpectResults(PngHeaders(), "picture.png", Read);
}

TEST(MalformedPicture, DamagedPngChunksGiveTheirResults)
{
    ExpectResults(PngChunks(), "picture.png", Read);
}

TEST(MalformedPicture, DamagedBitmapsGiveTheirResults)
{
    ExpectResults(Bitmaps(), "picture.bmp", Read);
}

TEST(MalformedPicture, DamagedPhotographsGiveTheirResults)
{
    ExpectResults(Photographs(), "picture.jpg", Read);
}

TEST(MalformedPicture, DamagedTagsGiveTheirResults)
{
    ExpectResults(TaggedPictures(), "picture.tiff", Read);
}

TEST(MalformedPicture, DamagedTargasGiveTheirResults)
{
    ExpectResults(Targas(), "picture.tga", Read);
}

TEST(MalformedPicture, HasItsRows)
{
    ExpectRowCount({PngHeaders(), PngChunks(), Bitmaps(), Photographs(), TaggedPictures(), Targas()},
                   kRowCount);
}
