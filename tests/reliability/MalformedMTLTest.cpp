#include <sstream>

#include <gtest/gtest.h>

#include "fileformat/obj/OBJFile.h"
#include "tests/common/Bytes.h"
#include "tests/common/PictureFiles.h"
#include "tests/reliability/MalformedRows.h"

namespace {

using namespace test;

constexpr std::size_t kRowCount = 79;

void AddColour(std::ostream& text, const char* keyword, bool isSet, const Vector3D<float>& colour)
{
    if (isSet)
        text << ' ' << keyword << ' ' << colour.x << ' ' << colour.y << ' ' << colour.z;
}

template<typename Value>
void AddNumber(std::ostream& text, const char* keyword, Value value, Value usual)
{
    if (!(value == usual))
        text << ' ' << keyword << ' ' << value;
}

void AddPicture(std::ostream& text, const char* keyword, const MeshTextureInfo& picture)
{
    EXPECT_EQ(picture.pixels.size(), 4 * picture.width * picture.height);
    if (picture.width != 0)
        text << ' ' << keyword << ' ' << picture.width << 'x' << picture.height;
}

/// Each material as its name and what a library without statements would not have made of it.
std::string Read(const QString& path)
{
    std::vector<MeshMaterialInfo> materials(2);
    if (!OBJFile::LoadMTLFile(path, materials, 0)) {
        EXPECT_TRUE(materials.empty());
        return kRefused;
    }
    std::ostringstream text;
    text.precision(7);
    for (const MeshMaterialInfo& material : materials) {
        text << '[' << material.name;
        AddColour(text, "Ka", material.hasAmbient, material.ambient);
        AddColour(text, "Kd", material.hasDiffuse, material.diffuse);
        AddColour(text, "Ks", material.hasSpecular, material.specular);
        AddColour(text, "Ke", material.hasEmissive, material.emissive);
        AddNumber(text, "Ns", material.specularExponent, 0.0f);
        AddNumber(text, "Ni", material.refractionIndex, 1.0f);
        AddNumber(text, "d", material.opacity, 1.0f);
        AddNumber(text, "illum", material.illum, 2);
        AddPicture(text, "map_Kd", material.diffuseTexture);
        AddPicture(text, "map_Ke", material.emissiveTexture);
        AddPicture(text, "map_d", material.opacityTexture);
        AddPicture(text, "bump", material.bumpTexture);
        text << ']';
    }
    return text.str();
}

/// A material with this line.
QByteArray Oak(const QByteArray& line)
{
    return "newmtl oak\n" + line + '\n';
}

MalformedRows Materials()
{
    return {
        {"an empty file", "", ""},
        {"a file of zeros", QByteArray(300, '\0'), ""},
        {"a file of ones", QByteArray(300, '\xff'), ""},
        {"a material without a name", "newmtl\nKd 1 0 0\n", ""},
        {"a material's name of two words", "newmtl dark oak\nNs 5\n", ""},
        {"a second material without a name", "newmtl oak\nnewmtl\nNs 5\n", "[oak Ns 5]"},
        {"two materials of one name", "newmtl oak\nNs 5\nnewmtl oak\nNs 6\n", "[oak Ns 5][oak Ns 6]"},
        {"statements in front of the first material", "Kd 1 0 0\nNs 5\nillum 1\nnewmtl oak\n", "[oak]"},
        {"a keyword in capitals", "NEWMTL oak\nNs 5\n", ""},
        {"a keyword grown together with the name", "newmtloak\nNs 5\n", ""},
        {"a tab behind the keyword", "newmtl\toak\nNs 5\n", ""},
        {"a name that is no UTF-8", "newmtl G\xfcn\n", "[G\xef\xbf\xbdn]"},
        {"a name of 100,000 letters", "newmtl " + QByteArray(100000, 'n') + '\n',
         '[' + std::string(100000, 'n') + ']'},
        {"a name in quotes", "newmtl \"oak\"\n", "[\"oak\"]"},
        {"a model's statements in a library", "v 1 2 3\nf 1 2 3\nusemtl oak\nnewmtl oak\n", "[oak]"},
    };
}

MalformedRows Colours()
{
    return {
        {"a colour of one number", Oak("Kd 0.5"), "[oak]"},
        {"a colour of two numbers", Oak("Kd 0.5 0.5"), "[oak]"},
        {"a colour of four numbers", Oak("Kd 0.5 0.5 0.5 1"), "[oak]"},
        {"a colour of words", Oak("Ka red green blue"), "[oak Ka 0 0 0]"},
        {"a colour as a spectral file", Oak("Ks spectral oak.rfl 1"), "[oak Ks 0 0 1]"},
        {"a colour with its notation", Oak("Kd xyz 0.5 0.5 0.5"), "[oak]"},
        {"a colour of 0 to 255", Oak("Kd 255 128 0"), "[oak Kd 255 128 0]"},
        {"a negative colour", Oak("Ke -1 -0.5 0"), "[oak Ke -1 -0.5 0]"},
        {"a colour that is no number", Oak("Ke nan 0 0"), "[oak Ke nan 0 0]"},
        {"an infinite colour", Oak("Ke inf -inf 1e999"), "[oak Ke inf -inf inf]"},
        {"a colour too large for a float", Oak("Ke 1e39 0 0"), "[oak Ke inf 0 0]"},
        {"decimal commas in a colour", Oak("Kd 0,5 0,5 0,5"), "[oak Kd 0 0 0]"},
        {"percentages in a colour", Oak("Kd 50% 50% 50%"), "[oak Kd 0 0 0]"},
        {"a hexadecimal colour", Oak("Kd #ff8000"), "[oak]"},
        {"a colour's keyword in small letters", Oak("kd 1 1 1"), "[oak]"},
        {"a colour given twice", Oak("Kd 1 1 1\nKd 0.25 0.5 0.75"), "[oak Kd 0.25 0.5 0.75]"},
        {"a colour given twice, the second too short", Oak("Kd 0.25 0.5 0.75\nKd 1"),
         "[oak Kd 0.25 0.5 0.75]"},
        {"tabs between the numbers of a colour", Oak("Kd\t1\t1\t1"), "[oak]"},
    };
}

MalformedRows Numbers()
{
    return {
        {"a number without its value", Oak("Ns"), "[oak]"},
        {"a number with two values", Oak("Ns 5 6"), "[oak]"},
        {"a word for an exponent", Oak("Ns 7\nNs shiny"), "[oak]"},
        {"an exponent that is no number", Oak("Ns nan"), "[oak Ns nan]"},
        {"a negative exponent", Oak("Ns -12"), "[oak Ns -12]"},
        {"a refraction index of 0", Oak("Ni 0"), "[oak Ni 0]"},
        {"a word for an opacity", Oak("d half"), "[oak d 0]"},
        {"an opacity with the halo's option", Oak("d -halo 0.5"), "[oak]"},
        {"an opacity above 1", Oak("d 50"), "[oak d 50]"},
        {"a transparency for the opacity", Oak("Tr 0.5"), "[oak]"},
        {"an illumination model that is a fraction", Oak("illum 1.5"), "[oak illum 0]"},
        {"an illumination model beyond 32 bits", Oak("illum 4294967297"), "[oak illum 0]"},
        {"an illumination model that nobody knows", Oak("illum 2147483647"), "[oak illum 2147483647]"},
        {"the lowest illumination model", Oak("illum -2147483648"), "[oak illum -2147483648]"},
        {"an illumination model in words", Oak("illum two"), "[oak illum 0]"},
        {"an illumination model with an exponent", Oak("illum 1e0"), "[oak illum 0]"},
    };
}

MalformedRows Maps()
{
    return {
        {"a map without a file", Oak("map_Kd"), "[oak]"},
        {"a map of a file that is not there", Oak("map_Kd nowhere.png"), "[oak]"},
        {"a map that is a directory", Oak("map_Kd ."), "[oak]"},
        {"a map that is the library itself", Oak("map_Kd library.mtl"), "[oak]"},
        {"a map of options alone", Oak("map_Kd -s 1 1 1"), "[oak]"},
        {"a map whose option lacks its argument", Oak("map_Kd -s wood.png"), "[oak map_Kd 5x4]"},
        {"a map with an unknown option", Oak("map_Kd -turn 90 wood.png"), "[oak map_Kd 5x4]"},
        {"a map with another machine's path", Oak("map_Ke C:\\Users\\me\\wood.png"), "[oak map_Ke 5x4]"},
        {"a map in quotes", Oak("map_d \"wood.png\""), "[oak map_d 5x4]"},
        {"a map whose quotes are not closed", Oak("map_d \"wood.png"), "[oak]"},
        {"a map given twice, the second not there", Oak("map_Kd wood.png\nmap_Kd nowhere.png"), "[oak]"},
        {"a map's keyword in small letters", Oak("map_bump wood.png"), "[oak]"},
        {"a map with a tab behind its keyword", Oak("map_Kd\twood.png"), "[oak]"},
        {"a map of a damaged picture", Oak("map_Kd cut.png\nNs 5"), "[oak Ns 5]"},
        {"a map of a picture of 2^31 pixels a side", Oak("map_Kd huge.png\nNs 5"), "[oak Ns 5]"},
        {"a map of an empty picture file", Oak("bump empty.png\nNs 5"), "[oak Ns 5]"},
        {"a map whose name ends in a zero", Oak(Bytes("map_Kd wood.png\0.txt")), "[oak map_Kd 5x4]"},
    };
}

MalformedRows Lines()
{
    const QByteArray blanks(1048575 - 4, ' ');
    return {
        {"a carriage return for each line end", "newmtl oak\rNs 5\r", ""},
        {"zeros for line ends", Bytes("newmtl oak\0Ns 5\0"), "[oak Ns 5]"},
        {"a zero within a number", Oak(Bytes("Ns 5\0 6")), "[oak Ns 5]"},
        {"a byte-order mark", "\xef\xbb\xbf" + Oak("Ns 5"), "[oak Ns 5]"},
        {"two bytes a character", Utf16(Oak("Ns 5")), ""},
        {"a statement with a tab in front", Oak("\tNs 5"), "[oak Ns 5]"},
        {"a remark with a blank in front", Oak(" # Ns 5"), "[oak]"},
        {"a remark behind a number", Oak("Ns 5 # shiny"), "[oak]"},
        {"a backslash in front of an indented line", Oak("Kd 1 \\\n 0 1"), "[oak Kd 1 0 1]"},
        {"a backslash in front of a line without a blank", Oak("Ns \\\n5"), "[oak]"},
        {"a line of the largest length", Oak("Ns 5" + blanks + "\nd 0.5"), "[oak Ns 5 d 0.5]"},
        {"a line one byte longer", Oak("d 0.5\nNs 5" + blanks + " \nillum 1"), "[oak d 0.5]"},
        {"no line end at the end", "newmtl oak\nNs 5", "[oak Ns 5]"},
    };
}

} // namespace

TEST(MalformedMTL, DamagedMaterialsGiveTheirResults)
{
    ExpectResults(Materials(), "library.mtl", Read);
}

TEST(MalformedMTL, DamagedColoursGiveTheirResults)
{
    ExpectResults(Colours(), "library.mtl", Read);
}

TEST(MalformedMTL, OddNumbersGiveTheirResults)
{
    ExpectResults(Numbers(), "library.mtl", Read);
}

TEST(MalformedMTL, DamagedMapsGiveTheirResults)
{
    const QByteArray wood = Encoded(RandomPicture(5, 4), "PNG");
    ExpectResults(Maps(), "library.mtl", Read,
                  {{"wood.png", wood},
                   {"cut.png", wood.left(40)},
                   {"huge.png", PNGThatClaims(0x80000000, 0x80000000)},
                   {"empty.png", ""}});
}

TEST(MalformedMTL, OddLinesGiveTheirResults)
{
    ExpectResults(Lines(), "library.mtl", Read);
}

TEST(MalformedMTL, HasItsRows)
{
    ExpectRowCount({Materials(), Colours(), Numbers(), Maps(), Lines()}, kRowCount);
}
