#include <cstdint>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"
#include "tests/common/Bytes.h"
#include "tests/common/FilledMesh.h"
#include "tests/reliability/MalformedRows.h"
#include "tests/stl/STLBuilders.h"

namespace {

using namespace test;
using Limits = std::numeric_limits<float>;

constexpr std::size_t kRowCount = 130;

// What the builders' first facets become.
constexpr char kOne[] = "0 0 0, 1 0 0, 0 1 0 | 0 1 2";
constexpr char kTwo[] = "0 0 0, 1 0 0, 0 1 0, 10 0 0, 11 0 0, 10 1 0 | 0 1 2, 3 4 5";
constexpr char kNothing[] = " | ";

std::string Read(const QString& path)
{
    Mesh mesh = FilledMesh();
    try {
        if (STLFile::LoadFile(path, mesh, false, 80, false)) {
            ExpectIdentityOfFilledMesh(mesh);
            return TextOf(mesh);
        }
    } catch (const std::out_of_range&) {
        ExpectFilledMesh(mesh);
        return kOutOfRange;
    }
    ExpectFilledMesh(mesh);
    return kRefused;
}

/// A header of 80 bytes that begins like this.
QByteArray Header(const QByteArray& begin)
{
    return begin.leftJustified(80, '\0');
}

QByteArray OneFacet()
{
    return TextSTL().Facets(1).End();
}

/// A text of one facet whose second or third corner is this line.
QByteArray WithSecond(const QByteArray& line)
{
    return Changed(OneFacet(), "vertex 1 0 0", line);
}
QByteArray WithThird(const QByteArray& line)
{
    return Changed(OneFacet(), "vertex 0 1 0", line);
}

MalformedRows Headers()
{
    const QByteArray good = BinarySTL().Facets(1);
    return {
        {"an empty file", "", kRefused},
        {"one byte", "s", kRefused},
        {"four bytes of the first word", "soli", kRefused},
        {"five bytes of no word", "model", kRefused},
        {"the header less a byte", good.left(79), kRefused},
        {"the header alone", good.left(80), kRefused},
        {"half of the count", good.left(82), kRefused},
        {"a header that is a byte too long", BinarySTL().Header(QByteArray(81, 'h')).Facets(1), kRefused},
        {"a header that is a byte too short", BinarySTL().Header(QByteArray(79, 'h')).Facets(1), kRefused},
        {"no header", BinarySTL().Header("").Facets(1), kRefused},
        {"a binary header that begins as text does", BinarySTL().Header(Header("solid box")).Facets(1), kOne},
        {"the same in capitals", BinarySTL().Header(Header("SOLID BOX")).Facets(1), kOne},
        {"the word of text in the middle of a header",
         BinarySTL().Header(Header("made from a solid")).Facets(1), kOne},
        {"a corner in a header, continued by bytes of records",
         BinarySTL().Header(Header("solid\nvertex 1 2")).Facets(1), kOne},
        {"a facet without a normal in a header",
         BinarySTL().Header(Header("solid\nvertex 0 0 0 vertex 1 0 0 vertex 0 1 0")).Facets(2), kOutOfRange},
        {"a whole facet in a header",
         BinarySTL().Header(Header("solid\nnormal 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 0 1 0")).Facets(2),
         kOne},
        {"a binary file with a line of text behind it", QByteArray(BinarySTL().Facets(1)) + "endsolid\n",
         kOne},
        {"a compressed file", Bytes("\x1f\x8b\x08\0\0\0\0\0\0\3\x03\0\0\0\0\0\0\0\0\0"), kRefused},
        {"a file of zeros", QByteArray(500, '\0'), kRefused},
        {"a file of ones", QByteArray(500, '\xff'), kRefused},
        {"another format's first word", QByteArray("ply\nformat ascii 1.0\n").repeated(8), kRefused},
        {"a page of the server's", "<html><body>The model that you asked for is not here.</body></html>",
         kRefused},
    };
}

MalformedRows Counts()
{
    const auto claimed = [](std::uint32_t count, int facets) {
        return QByteArray(BinarySTL().Count(count).Facets(facets));
    };
    const auto surplus = [](int bytes) { return QByteArray(BinarySTL().Count(1).Facets(1).Surplus(bytes)); };
    const auto cut = [](int bytes) { return QByteArray(BinarySTL().Count(2).Facets(2).CutLast(bytes)); };
    return {
        {"a count of 0 without records", claimed(0, 0), kRefused},
        {"a count of 0 and a record", claimed(0, 1), kRefused},
        {"a count of 1 without records", claimed(1, 0), kRefused},
        {"a count that is one too large", claimed(3, 2), kRefused},
        {"a count that is one too small", claimed(1, 2), kRefused},
        {"a count of -1", claimed(0xffffffff, 1), kRefused},
        {"the lowest count", claimed(0x80000000, 1), kRefused},
        {"the largest count", claimed(0x7fffffff, 1), kRefused},
        {"a count whose bytes wrap to one record", claimed(0x80000001, 1), kRefused},
        {"a count whose corners wrap to one record", claimed(0x55555556, 1), kRefused},
        {"a count with its high byte first", claimed(0x01000000, 1), kRefused},
        {"a last record without its attribute word", cut(2), kTwo},
        {"a lone record without its attribute word", BinarySTL().Count(1).Facets(1).CutLast(2), kRefused},
        {"a last record without the attribute's high byte", cut(1), kRefused},
        {"a last record without the end of its last number", cut(3), kRefused},
        {"a last record without its last corner", cut(14), kRefused},
        {"a last record that is a normal alone", cut(38), kRefused},
        {"a last record of one byte", cut(49), kRefused},
        {"no last record", cut(50), kRefused},
        {"a surplus byte", surplus(1), kOne},
        {"47 surplus bytes", surplus(47), kOne},
        {"48 surplus bytes, a record of its own but for the attribute", surplus(48), kRefused},
        {"49 surplus bytes", surplus(49), kOne},
        {"50 surplus bytes, a record of its own", surplus(50), kRefused},
        {"51 surplus bytes", surplus(51), kRefused},
    };
}

MalformedRows BinaryNumbers()
{
    const auto third = [](const Point& point) {
        return QByteArray(BinarySTL().Facet({0, 0, 0}, {1, 0, 0}, point));
    };
    const float tiny = Limits::denorm_min();
    return {
        {"a corner that is no number", third({0, 1, Limits::quiet_NaN()}), "0 0 0, 1 0 0, 0 1 nan | 0 1 2"},
        {"an infinite corner", third({0, 1, Limits::infinity()}), "0 0 0, 1 0 0, 0 1 inf | 0 1 2"},
        {"a corner at minus infinity", third({0, 1, -Limits::infinity()}), "0 0 0, 1 0 0, 0 1 -inf | 0 1 2"},
        {"the largest number", third({0, Limits::max(), 0}), "0 0 0, 1 0 0, 0 3.402823e+38 0 | 0 1 2"},
        {"corners as small as numbers get", BinarySTL().Facet({0, 0, 0}, {tiny, 0, 0}, {0, tiny, 0}),
         "0 0 0, 1.401298e-45 0 0, 0 1.401298e-45 0 | 0 1 2"},
        {"a facet of one point", BinarySTL().Facet({1, 2, 3}, {1, 2, 3}, {1, 2, 3}), kNothing},
        {"a facet of one point before another",
         BinarySTL().Facet({1, 2, 3}, {1, 2, 3}, {1, 2, 3}).Facet({0, 0, 0}, {1, 0, 0}, {0, 1, 0}), kOne},
        {"a facet that names its last corner twice",
         BinarySTL().Facets(1).Facet({5, 5, 5}, {6, 5, 5}, {6, 5, 5}), kOne},
        {"a facet with its first corner as the last", BinarySTL().Facet({5, 5, 5}, {6, 5, 5}, {5, 5, 5}),
         kNothing},
        {"an attribute word that claims 65535 bytes",
         BinarySTL().Facet({0, 0, 0}, {1, 0, 0}, {0, 1, 0}, 0xffff), kOne},
        {"a normal that is no number", Overwritten(BinarySTL().Facets(1), 84, QByteArray(12, '\xff')), kOne},
    };
}

MalformedRows Words()
{
    return {
        {"the first word alone", "solid", kRefused},
        {"a solid without facets", "solid model\nendsolid model\n", kRefused},
        {"a first word that lacks its last letter", Changed(OneFacet(), "solid", "soli"), kRefused},
        {"a first word with blanks between its letters", Changed(OneFacet(), "solid", "s o l i d"), kRefused},
        {"all words in capitals", OneFacet().toUpper(), kOne},
        {"a first line that goes on with the normal", Changed(OneFacet(), "model\n  facet", "model facet"),
         kOutOfRange},
        {"all on one line", Changed(OneFacet(), "\n", " "), kRefused},
        {"no normals", Changed(OneFacet(), "normal 0 0 1", ""), kOutOfRange},
        {"a normal for one of two facets",
         QByteArray(TextSTL().Facets(1).Line("vertex 0 0 5 vertex 1 0 5 vertex 0 1 5").End()), kOutOfRange},
        {"a misspelt normal", Changed(OneFacet(), "normal", "nornal"), kOutOfRange},
        {"a misspelt corner", WithThird("vertx 0 1 0"), kRefused},
        {"a corner's word grown together with its number", WithThird("vertex0 1 0"), kRefused},
        {"a corner's word on two lines", WithThird("ver\ntex 0 1 0"), kRefused},
        {"a corner's word with a letter of another alphabet", WithThird("vert\xd0\xb5x 0 1 0"), kRefused},
        {"a normal behind its corners",
         "solid\nvertex 0 0 0 vertex 1 0 0 vertex 0 1 0 normal 0 0 1\nendsolid", kOne},
        {"two normals for a facet", Changed(OneFacet(), "normal 0 0 1", "normal 0 0 1 normal 0 1 0"), kOne},
        {"no word that opens a loop", Changed(OneFacet(), "outer loop", ""), kOne},
        {"no word that closes a loop or a facet", Changed(Changed(OneFacet(), "endloop", ""), "endfacet", ""),
         kOne},
        {"an unknown word in front of each corner", Changed(OneFacet(), "vertex", "colour 7 vertex"), kOne},
        {"a solid in a solid", QByteArray(TextSTL().Line("solid inner").Facets(1).End().End()), kOne},
        {"no end of the solid", QByteArray(TextSTL().Facets(1)), kOne},
        {"half a word that ends the solid", QByteArray(TextSTL().Facets(1)) + "endsol", kOne},
        {"the end of the solid in front of its facet", QByteArray(TextSTL().End().Facets(1).End()), kRefused},
        {"a facet between two ends", QByteArray(TextSTL().Facets(1).End().Facets(1).End()), kOne},
        {"facets behind the end of the file's last solid", QByteArray(TextSTL().Facets(1).End().Facets(3)),
         kOne},
        {"a remark that contains the corner's word", Changed(OneFacet(), "outer loop", "# vertex of a hand"),
         kNothing},
        {"an unknown word of 100,000 letters", Changed(OneFacet(), "outer", QByteArray(100000, 'w')), kOne},
    };
}

MalformedRows Corners()
{
    return {
        {"a facet of two corners", WithThird(""), kRefused},
        {"a facet of four corners", WithThird("vertex 0 1 0\nvertex 5 5 5"), kOne},
        {"a facet of one corner, the next of two",
         QByteArray(
             TextSTL().Normal().Vertex({0, 0, 0}).EndFacet().Normal().Vertex({1, 0, 0}).Vertex({0, 1, 0})),
         kOne},
        {"a corner missing in the first of two facets",
         Changed(TextSTL().Facets(2).End(), "vertex 0 1 0", ""), "0 0 0, 1 0 0, 10 0 0 | 0 1 2"},
        {"a second facet without corners", QByteArray(TextSTL().Facets(1).Normal().EndFacet().End()), kOne},
        {"a corner of two numbers", WithThird("vertex 0 5"), "0 0 0, 1 0 0, 0 5 0 | 0 1 2"},
        {"a corner of four numbers", WithThird("vertex 0 1 0 7"), kOne},
        {"a corner's word at the end of the file", QByteArray(TextSTL().Facets(1)) + "vertex", kRefused},
        {"a corner cut off behind one number", QByteArray(TextSTL().Facets(1)) + "vertex 1", kRefused},
        {"a corner cut off behind two numbers", QByteArray(TextSTL().Facets(1)) + "vertex 1 2 ", kRefused},
        {"a normal cut off behind its word", QByteArray(TextSTL().Facets(1)) + "normal", kRefused},
        {"a normal cut off behind two numbers", QByteArray(TextSTL().Facets(1)) + "normal 0 0\n", kRefused},
        {"a corner on four lines", WithThird("vertex\n0\n1\n0"), kOne},
    };
}

MalformedRows TextNumbers()
{
    const QByteArray zeros(253, '0');
    return {
        {"a word for a number", WithThird("vertex zero 1 0"), kOne},
        {"a decimal comma", WithSecond("vertex 1,5 0 0"), "0 0 0, 1 5 0, 0 1 0 | 0 1 2"},
        {"a hexadecimal number", WithThird("vertex 0x10 1 0"), kOne},
        {"an exponent without digits", WithThird("vertex 0 1 1e"), kOne},
        {"a number with two points", WithThird("vertex 0 1 1.0.0"), kOne},
        {"a number with two signs", WithThird("vertex 0 1 --1"), kOne},
        {"a number with its unit", WithThird("vertex 0 1 5mm"), kOne},
        {"a fraction", WithThird("vertex 0 1/2 0"), "0 0 0, 1 0 0, 0 1 2 | 0 1 2"},
        {"text for no number", WithThird("vertex 0 1 nan"), "0 0 0, 1 0 0, 0 1 nan | 0 1 2"},
        {"text for minus infinity", WithThird("vertex 0 1 -inf"), "0 0 0, 1 0 0, 0 1 -inf | 0 1 2"},
        {"a number too large for any type", WithThird("vertex 0 1 1e999"), "0 0 0, 1 0 0, 0 1 inf | 0 1 2"},
        {"a number too large for a float", WithThird("vertex 0 1 -1e39"), "0 0 0, 1 0 0, 0 1 -inf | 0 1 2"},
        {"a number too small for any type", WithThird("vertex 0 1 1e-999"), kOne},
        {"a number of 254 characters", WithThird("vertex 0 " + zeros + "5 0"), "0 0 0, 1 0 0, 0 5 0 | 0 1 2"},
        {"a number whose digit is the 255th character", WithThird("vertex 0 1 0" + zeros + "5"), kOne},
        {"the minus sign of print",
         WithThird("vertex 0 \xe2\x88\x92"
                   "1 0"),
         kOne},
        {"a wide digit, which is no part of a word", WithSecond("vertex \xef\xbc\x91 0 0"), kRefused},
        {"numbers in quotes", WithThird("vertex \"0\" \"1\" \"0\""), kOne},
        {"numbers in brackets", WithThird("vertex (0;1;0)"), kOne},
    };
}

MalformedRows Encodings()
{
    return {
        {"lines that end in a carriage return alone", TextSTL("\r").Facets(1).End(), kRefused},
        {"lines that end in both characters", TextSTL("\r\n").Facets(1).End(), kOne},
        {"lines that end in a form feed, but the first",
         Changed(Changed(OneFacet(), "\n", "\f"), "model\f  facet", "model\n  facet"), kOne},
        {"zeros for blanks", Changed(OneFacet(), " ", Bytes("\0")), kOne},
        {"zeros in front of the first word", Bytes("\0\0\0\0\0\0\0") + OneFacet(), kOne},
        {"a byte-order mark", "\xef\xbb\xbf" + OneFacet(), kOne},
        {"two bytes a character", Utf16(OneFacet()), kRefused},
        {"two bytes a character, with their mark", "\xff\xfe" + Utf16(OneFacet()), kRefused},
        {"a name that is no UTF-8", Changed(OneFacet(), "model", "Geh\xe4use\xff"), kOne},
        {"blank lines in front", "  \n\t\n" + OneFacet(), kOne},
        {"10,241 bytes in front of the first word", QByteArray(10241, 'x') + OneFacet(), kOne},
        {"10,242 bytes in front of the first word", QByteArray(10242, 'x') + OneFacet(), kRefused},
        {"20,000 blanks in front of the first word", QByteArray(20000, ' ') + OneFacet(), kOne},
    };
}

} // namespace

TEST(MalformedSTL, BinaryFilesWithDamagedHeadersGiveTheirResults)
{
    ExpectResults(Headers(), "model.stl", Read);
}

TEST(MalformedSTL, BinaryFilesWhoseCountIsWrongGiveTheirResults)
{
    ExpectResults(Counts(), "model.stl", Read);
}

TEST(MalformedSTL, BinaryFilesOfOddNumbersGiveTheirResults)
{
    ExpectResults(BinaryNumbers(), "model.stl", Read);
}

TEST(MalformedSTL, TextsWithWrongWordsGiveTheirResults)
{
    ExpectResults(Words(), "model.stl", Read);
}

TEST(MalformedSTL, TextsWithDamagedCornersGiveTheirResults)
{
    ExpectResults(Corners(), "model.stl", Read);
}

TEST(MalformedSTL, TextsOfOddNumbersGiveTheirResults)
{
    ExpectResults(TextNumbers(), "model.stl", Read);
}

TEST(MalformedSTL, TextsInOtherEncodingsGiveTheirResults)
{
    ExpectResults(Encodings(), "model.stl", Read);
}

TEST(MalformedSTL, HasItsRows)
{
    ExpectRowCount({Headers(), Counts(), BinaryNumbers(), Words(), Corners(), TextNumbers(), Encodings()},
                   kRowCount);
}
