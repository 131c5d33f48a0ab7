#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/obj/OBJFile.h"
#include "tests/common/Bytes.h"
#include "tests/common/FilledMesh.h"
#include "tests/reliability/MalformedRows.h"

namespace {

using namespace test;

constexpr std::size_t kRowCount = 106;

constexpr char kNothing[] = " | ";
constexpr char kOnePoint[] = "1 2 3 | ";
constexpr char kThreePoints[] = "0 0 0, 1 0 0, 0 1 0 | ";
constexpr char kOne[] = "0 0 0, 1 0 0, 0 1 0 | 0 1 2";

/// The mesh, then for each group its name with the first face and the number of faces.
std::string Read(const QString& path)
{
    Mesh mesh = FilledMesh();
    std::vector<MeshTextureGroup> groups(2);
    if (!OBJFile::LoadFile(path, mesh, groups, false, 0)) {
        ExpectFilledMesh(mesh);
        EXPECT_TRUE(groups.empty());
        return kRefused;
    }
    ExpectIdentityOfFilledMesh(mesh);
    std::string text = TextOf(mesh);
    for (const MeshTextureGroup& group : groups) {
        text += " [" + group.material.name + ' ' + std::to_string(group.firstFaceIndex) + '+' +
                std::to_string(group.faceCount) + ']';
    }
    return text;
}

/// Three vertices and these lines.
QByteArray WithPoints(const QByteArray& lines)
{
    return "v 0 0 0\nv 1 0 0\nv 0 1 0\n" + lines + '\n';
}

/// The same with a texture coordinate.
QByteArray WithTexture(const QByteArray& lines)
{
    return WithPoints("vt 0.5 0.25\n" + lines);
}

MalformedRows Vertices()
{
    return {
        {"a vertex without numbers", "v\n", kNothing},
        {"a vertex of two numbers", "v 1 2\n", kNothing},
        {"a vertex of two numbers and a half", "v 1 2 -\n", "1 2 0 | "},
        {"a word for a number", "v 1 two 3\n", "1 0 3 | "},
        {"decimal commas", "v 1,5 2,5 3\n", "0 0 3 | "},
        {"a hexadecimal number", "v 0x1 2 3\n", "0 2 3 | "},
        {"an exponent without digits", "v 1e 2 3\n", "0 2 3 | "},
        {"a number with its unit", "v 1mm 2 3\n", "0 2 3 | "},
        {"a number with two points", "v 1.0.0 2 3\n", "0 2 3 | "},
        {"text for no number", "v nan 2 3\n", "nan 2 3 | "},
        {"text for infinities", "v inf -inf 3\n", "inf -inf 3 | "},
        {"a number too large for any type", "v 1e999 2 3\n", "inf 2 3 | "},
        {"a number too large for a float", "v 1e39 2 3\n", "inf 2 3 | "},
        {"a number too small for any type", "v 1e-999 2 3\n", "0 2 3 | "},
        {"a number of 5,000 digits", "v 1." + QByteArray(5000, '0') + " 2 3\n", kOnePoint},
        {"a weight of 0", "v 1 2 3 0\n", kOnePoint},
        {"a weight that is no number at all", "v 1 2 3 w\n", kOnePoint},
        {"an infinite weight", "v 1 2 3 inf\n", "0 0 0 | "},
        {"a negative weight", "v 1 2 3 -2\n", "-0.5 -1 -1.5 | "},
        {"a weight and a surplus number", "v 1 2 3 2 9\n", kOnePoint},
        {"a hundred surplus numbers", "v 1 2 3" + QByteArray(" 9").repeated(100) + '\n', kOnePoint},
        {"a keyword in capitals", "V 1 2 3\n", kNothing},
        {"a keyword grown together with its number", "v1 2 3 4\n", kNothing},
        {"tabs for blanks", "v\t1\t2\t3\n", kNothing},
        {"a tab between two numbers", "v 1 2\t3 4 5\n", "0.2 0 0.8 | "},
        {"blanks that do not break",
         "v\xc2\xa0"
         "1\xc2\xa0"
         "2\xc2\xa0"
         "3\n",
         kNothing},
        {"semicolons behind numbers", "v 1; 2; 3;\n", "0 0 0 | "},
        {"a texture coordinate of one number", "vt 0.5\n", kNothing},
        {"a texture coordinate of words", "vt left top\n", " |  | 0 0 | "},
        {"a texture coordinate of four numbers", "vt 0.5 0.25 7 8\n", " |  | 0.5 0.25 | "},
    };
}

MalformedRows Faces()
{
    return {
        {"a face without corners", WithPoints("f"), kThreePoints},
        {"a face of two corners", WithPoints("f 1 2"), kThreePoints},
        {"a face's keyword in capitals", WithPoints("F 1 2 3"), kThreePoints},
        {"index 0", WithPoints("f 0 1 2"), kThreePoints},
        {"an index one too large", WithPoints("f 1 2 4"), kThreePoints},
        {"relative indices", WithPoints("f -3 -2 -1"), kThreePoints},
        {"the largest index", WithPoints("f 1 2 2147483647"), kThreePoints},
        {"the lowest index", WithPoints("f 1 2 -2147483648"), kThreePoints},
        {"an index beyond 32 bits that wraps to 3", WithPoints("f 1 2 4294967299"), kThreePoints},
        {"an index beyond 64 bits that wraps to 3", WithPoints("f 1 2 18446744073709551619"), kThreePoints},
        {"a fraction for an index", WithPoints("f 1 2 3.0"), kThreePoints},
        {"an exponent in an index", WithPoints("f 1 2 3e0"), kThreePoints},
        {"a word for an index", WithPoints("f 1 2 three"), kThreePoints},
        {"a sign in front of an index", WithPoints("f +1 +2 +3"), kOne},
        {"zeros in front of an index", WithPoints("f 0001 0002 0000000000003"), kOne},
        {"a face in front of its vertices", "f 1 2 3\n" + WithPoints(""), kOne},
        {"a face of one vertex", WithPoints("f 1 1 1"), "0 0 0, 1 0 0, 0 1 0 | 0 0 0"},
        {"a polygon with one corner out of range", WithPoints("f 1 2 3 9"), kOne},
        {"a polygon whose first corner is out of range", WithPoints("f 9 1 2 3"), kThreePoints},
        {"a bad face between good ones", WithPoints("f 1 2 3\nf 1 2 7\nf 3 2 1"),
         "0 0 0, 1 0 0, 0 1 0 | 0 1 2, 2 1 0"},
        {"a remark behind a face", WithPoints("f 1 2 3 # hand"), "0 0 0, 1 0 0, 0 1 0 | 0 1 2"},
        {"commas between corners", WithPoints("f 1, 2, 3"), kThreePoints},
    };
}

MalformedRows TextureFaces()
{
    const std::string points = "0 0 0, 1 0 0, 0 1 0 | ";
    const std::string texture = " | 0.5 0.25 | ";
    return {
        {"a texture index without coordinates", WithPoints("f 1/1 2/2 3/3"), points + "0 1 2 |  | 0 1 2"},
        {"a texture index out of range", WithTexture("f 1/1 2/1 3/99"),
         points + "0 1 2" + texture + "0 0 98"},
        {"texture index 0", WithTexture("f 1/0 2/0 3/0"), points + "0 1 2" + texture + "-1 -1 -1"},
        {"negative texture indices", WithTexture("f 1/-1 2/-1 3/-1"),
         points + "0 1 2" + texture + "-2 -2 -2"},
        {"a word for a texture index", WithTexture("f 1/a 2/b 3/c"), points + "0 1 2" + texture + "-1 -1 -1"},
        {"a slash with nothing behind it", WithTexture("f 1/ 2/ 3/"),
         points + "0 1 2" + texture + "-1 -1 -1"},
        {"a slash with nothing in front of it", WithTexture("f /1 /1 /1"), points + texture + "0 0 0"},
        {"slashes alone", WithTexture("f / / /"), points + texture + "-1 -1 -1"},
        {"two slashes alone", WithTexture("f // // //"), points + texture},
        {"three slashes", WithTexture("f 1/1/1/1 2/1/1/1 3/1/1/1"), points + "0 1 2" + texture + "0 0 0"},
        {"two slashes with nothing behind them", WithTexture("f 1// 2// 3//"), points + "0 1 2" + texture},
        {"a texture index for two of three corners", WithTexture("f 1/1 2/1 3"), points + "0 1 2" + texture},
        {"a texture index for three of four corners", WithTexture("f 1/1 2 3/1 1/1"),
         points + "0 1 2, 0 2 0" + texture + "0 0 0"},
        {"backslashes for slashes", WithTexture("f 1\\1 2\\1 3\\1"), points + texture},
        {"a textured face with a vertex out of range", WithTexture("f 1/1 2/1 9/1"),
         points + texture + "0 0 0"},
    };
}

MalformedRows Groups()
{
    return {
        {"a group without a name", WithPoints("usemtl\nf 1 2 3"), kOne},
        {"a group's name of two words", WithPoints("usemtl dark oak\nf 1 2 3"), kOne},
        {"a group without faces", WithPoints("usemtl oak"), std::string(kThreePoints) + " [oak -1+0]"},
        {"a group whose only face is dropped", WithPoints("usemtl oak\nf 1 2 9"),
         std::string(kThreePoints) + " [oak 0+1]"},
        {"two groups of one name", WithPoints("usemtl oak\nf 1 2 3\nusemtl oak\nf 3 2 1"),
         "0 0 0, 1 0 0, 0 1 0 | 0 1 2, 2 1 0 [oak 0+1] [oak 1+1]"},
        {"a group begun when the faces are over", WithPoints("f 1 2 3\nusemtl late"),
         std::string(kOne) + " [late -1+0]"},
        {"a group of both kinds of faces", WithTexture("usemtl oak\nf 1 2 3\nf 1/1 2/1 3/1"),
         "0 0 0, 1 0 0, 0 1 0 | 0 1 2, 0 1 2 | 0.5 0.25 | 0 0 0 [oak 0+2]"},
        {"a group's name that is no UTF-8", WithPoints("usemtl G\xfcn\nf 1 2 3"),
         std::string(kOne) + " [G\xef\xbf\xbdn 0+1]"},
        {"a group's keyword in capitals", WithPoints("USEMTL oak\nf 1 2 3"), kOne},
        {"a library that is not there", WithPoints("mtllib nowhere.mtl\nusemtl oak\nf 1 2 3"),
         std::string(kOne) + " [oak 0+1]"},
        {"a library that is a directory", WithPoints("mtllib ..\nusemtl oak\nf 1 2 3"),
         std::string(kOne) + " [oak 0+1]"},
        {"a library without a name", WithPoints("mtllib\nusemtl oak\nf 1 2 3"),
         std::string(kOne) + " [oak 0+1]"},
        {"the model itself as its library", WithPoints("mtllib model.obj\nusemtl oak\nf 1 2 3"),
         std::string(kOne) + " [oak 0+1]"},
    };
}

MalformedRows Lines()
{
    const QByteArray blanks(1048575 - 7, ' ');
    return {
        {"an empty file", "", kNothing},
        {"a file of blank lines", "\n\n \n\r\n\n", kNothing},
        {"a file of zeros", QByteArray(300, '\0'), kNothing},
        {"a file of ones", QByteArray(300, '\xff'), kNothing},
        {"no line end at the end", "v 1 2 3", kOnePoint},
        {"a carriage return for each line end", "v 1 2 3\rv 4 5 6\r", "1 2 0 | "},
        {"a carriage return within a number", "v 1 2\r.5 3\n", "1 2.5 3 | "},
        {"a zero for a line end", Bytes("v 1 2 3\0v 4 5 6\n"), "1 2 3, 4 5 6 | "},
        {"a zero within a statement", Bytes("v 1 2\0 3\n"), kNothing},
        {"a remark with a blank in front", " # v 1 2 3\nv 1 2 3\n", kOnePoint},
        {"a remark that goes on with a backslash", "# remark \\\nv 4 5 6\nv 1 2 3\n", kOnePoint},
        {"a byte-order mark", "\xef\xbb\xbfv 1 2 3\n", kOnePoint},
        {"two bytes a character", Utf16("v 1 2 3\n"), kNothing},
        {"two bytes a character, with their mark", "\xff\xfe" + Utf16("v 1 2 3\n"), kNothing},
        {"a backslash in front of an indented line", "v 1 2 \\\n 3\n", kOnePoint},
        {"a backslash in front of a line without a blank", "v 1 2 \\\n3\n", "1 2 0 | "},
        {"a backslash and blanks behind it", "v 1 2 \\  \r\n 3\n", kOnePoint},
        {"a backslash as the last byte", "v 1 2 3 \\", kOnePoint},
        {"a backslash within a number", "v 1\\5 2 3\n", "0 2 3 | "},
        {"a row of backslashes at the end of a line", "v 1 2 \\\\\\\n 3\n", kOnePoint},
        {"a line of the largest length", "v 1 2 3" + blanks + "\nv 4 5 6\n", "1 2 3, 4 5 6 | "},
        {"a line one byte longer", "v 1 2 3\nv 4 5 6" + blanks + " \nv 7 8 9\n", kOnePoint},
        {"joined lines that are too long together",
         "v 1 2 3\nv 4 5 6" + blanks.left(600000) + "\\\n" + blanks.left(600000) + "\nv 7 8 9\n", kOnePoint},
        {"a library's statements in a model", "newmtl oak\nKd 1 1 1\nv 1 2 3\n", kOnePoint},
        {"a text of STL", "solid x\nfacet normal 0 0 1\nvertex 1 2 3\nendsolid\n", kNothing},
        {"a merge conflict's marks", "<<<<<<< ours\nv 1 2 3\n=======\n>>>>>>> theirs\n", kOnePoint},
    };
}

} // namespace

TEST(MalformedOBJ, DamagedVerticesGiveTheirResults)
{
    ExpectResults(Vertices(), "model.obj", Read);
}

TEST(MalformedOBJ, DamagedFacesGiveTheirResults)
{
    ExpectResults(Faces(), "model.obj", Read);
}

TEST(MalformedOBJ, DamagedTextureFacesGiveTheirResults)
{
    ExpectResults(TextureFaces(), "model.obj", Read);
}

TEST(MalformedOBJ, DamagedGroupsGiveTheirResults)
{
    ExpectResults(Groups(), "model.obj", Read);
}

TEST(MalformedOBJ, OddLinesGiveTheirResults)
{
    ExpectResults(Lines(), "model.obj", Read);
}

TEST(MalformedOBJ, HasItsRows)
{
    ExpectRowCount({Vertices(), Faces(), TextureFaces(), Groups(), Lines()}, kRowCount);
}
