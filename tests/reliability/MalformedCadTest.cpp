#include <sstream>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "tests/cad/CadFiles.h"
#include "tests/cad/CadLoadSupport.h"
#include "tests/common/Bytes.h"
#include "tests/common/Directory.h"
#include "tests/reliability/MalformedRows.h"

// OpenCASCADE crashes on some files whose entities name others that are not there; none of these does so.

namespace {

using namespace test;

constexpr std::size_t kStepRowCount = 49;
constexpr std::size_t kIgesRowCount = 50;

// The sheet, a rectangle of two triangles.
constexpr char kSheet[] = "2 faces of 4 vertices from 0 0 0 to 0 20 30 Sheet";

std::string TextOfPart(const Mesh& mesh)
{
    std::ostringstream text;
    const MeshBoundingBox box = mesh.GetBoundingBox();
    text << mesh.GetFaceNum() << " faces of " << mesh.GetVertexNum() << " vertices from " << box.minimum.x
         << ' ' << box.minimum.y << ' ' << box.minimum.z << " to " << box.maximum.x << ' ' << box.maximum.y
         << ' ' << box.maximum.z << ' ' << mesh.GetObjectName().toStdString();
    return text.str();
}

/// Each mesh with its extents and its name.
std::string Read(const QString& path)
{
    const CadMeshes meshes(path, kDeflection, kAngle, false);
    if (!meshes.IsLoaded()) {
        EXPECT_EQ(meshes.Count(), 0u);
        return kRefused;
    }
    EXPECT_EQ(OpenDocumentCount(), 0);
    std::string text;
    for (const Mesh* const mesh : meshes.All()) {
        EXPECT_TRUE(IsWhole(*mesh));
        text += TextOfPart(*mesh);
    }
    return text;
}

CadPartPointer Sheet()
{
    return Part(QStringLiteral("Sheet"), PieceOf(Box(10, 20, 30), CadPiece::Face));
}

QByteArray Step()
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("sheet.step"));
    EXPECT_TRUE(WriteSTEP(path, {Sheet()}));
    return Directory::Read(path);
}

QByteArray Iges()
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("sheet.iges"));
    EXPECT_TRUE(WriteIGES(path, {Sheet()}));
    return Directory::Read(path);
}

/// The bytes in front of the first @p text.
QByteArray Before(const QByteArray& bytes, const QByteArray& text)
{
    EXPECT_TRUE(bytes.contains(text)) << text.constData();
    return bytes.left(bytes.indexOf(text));
}

MalformedRows StepStructure()
{
    const QByteArray good = Step();
    const QByteArray header = Before(good, "DATA;");
    const QByteArray end = "ENDSEC;\nEND-ISO-10303-21;\n";
    return {
        {"an empty file", "", kRefused},
        {"a file of blanks", QByteArray(300, ' '), kRefused},
        {"a file of zeros", QByteArray(300, '\0'), kRefused},
        {"a file of ones", QByteArray(300, '\xff'), kRefused},
        {"a text of STL", "solid x\nendsolid x\n", kRefused},
        {"a file of IGES", Iges(), kRefused},
        {"the first line alone", "ISO-10303-21;\n", kRefused},
        {"half of the first line", "ISO-103", kRefused},
        {"the first and the last line", "ISO-10303-21;\nEND-ISO-10303-21;\n", kRefused},
        {"a file cut within its header", Before(good, "FILE_NAME"), kRefused},
        {"a file cut behind its header", header, kRefused},
        {"a header alone, with the file's end", header + "END-ISO-10303-21;\n", kRefused},
        {"no data", header + "DATA;\n" + end, kRefused},
        {"data of a point alone", header + "DATA;\n#1 = CARTESIAN_POINT('',(0.,0.,0.));\n" + end, kRefused},
        {"data of kinds that nobody knows", header + "DATA;\n#1 = WINDMILL('',4);\n#2 = SAIL(#1);\n" + end,
         kRefused},
        {"a file cut behind its first entities", Before(good, "#4 ="), kRefused},
        {"a file cut within its first entity", Before(good, "2000,#2"), kRefused},
        {"a product without its shape", Changed(good, "SHAPE_DEFINITION_REPRESENTATION(#", "WINDMILL(#"),
         kRefused},
        {"a model of a kind that nobody knows", Changed(good, "SHELL_BASED_SURFACE_MODEL", "WINDMILL"),
         kRefused},
        {"two bytes a character", Utf16(good), kRefused},
        {"two bytes a character, with their mark", "\xff\xfe" + Utf16(good), kRefused},
        {"no line that says the file has ended", Changed(good, "END-ISO-10303-21;", ""), kRefused},
        {"half of the line that says so", Changed(good, "END-ISO-10303-21;", "END-ISO"), kRefused},
        {"no end of the data", Changed(good, "ENDSEC;\nEND-", "END-"), kRefused},
        {"no end of the header", Changed(good, "ENDSEC;\nDATA;", "DATA;"), kRefused},
        {"no begin of the header", Changed(good, "HEADER;", ""), kRefused},
        {"bytes behind the file's end", good + "surplus (((' \xff\n", kSheet},
        {"a file twice", good + good, kSheet},
    };
}

MalformedRows StepText()
{
    const QByteArray good = Step();
    return {
        {"both characters for a line end", Changed(good, "\n", "\r\n"), kSheet},
        {"carriage returns for line ends", Changed(good, "\n", "\r"), kSheet},
        {"blanks for line ends", Changed(good, "\n", " "), kSheet},
        {"blank lines in front", "\n\n \n" + good, kSheet},
        {"blank lines between all lines", Changed(good, "\n", "\n\n"), kSheet},
        {"no blanks around the equal signs", Changed(good, " = ", "="), kSheet},
        {"a remark in the data", Changed(good, "DATA;", "DATA; /* #1 = ( ' */"), kSheet},
        {"a remark of many lines in the header", Changed(good, "HEADER;", "HEADER; /*\n\n DATA;\n*/"),
         kSheet},
        {"a remark that is not closed, in front of the data", Changed(good, "DATA;", "/* DATA;"), kRefused},
        {"an entity that nobody names",
         Changed(good, "DATA;", "DATA;\n#9001 = CARTESIAN_POINT('',(1.,2.,3.));"), kSheet},
        {"an entity of a kind that nobody knows beside others",
         Changed(good, "DATA;", "DATA;\n#9001 = WINDMILL('',(1.,2.,3.),$,*,.T.);"), kSheet},
        {"an unused entity that names one that is not there",
         Changed(good, "DATA;", "DATA;\n#9001 = VERTEX_POINT('',#9002);"), kSheet},
        {"an unused entity without its values", Changed(good, "DATA;", "DATA;\n#9001 = CARTESIAN_POINT();"),
         kSheet},
        {"an unused entity with values too many",
         Changed(good, "DATA;", "DATA;\n#9001 = CARTESIAN_POINT('',(1.,2.,3.),4,5,6);"), kSheet},
        {"an unused entity with values of other types",
         Changed(good, "DATA;", "DATA;\n#9001 = CARTESIAN_POINT(1.,'x');"), kSheet},
        {"an unused entity with 10,000 coordinates",
         Changed(good, "DATA;",
                 "DATA;\n#9001 = CARTESIAN_POINT('',(" + QByteArray("1.,").repeated(9999) + "1.));"),
         kSheet},
        {"an unused entity with a name of 1,000 letters",
         Changed(good, "DATA;",
                 "DATA;\n#9001 = CARTESIAN_POINT('" + QByteArray(1000, 'n') + "',(1.,2.,3.));"),
         kSheet},
        {"numbers without their points",
         Changed(Changed(good, "(0.,20.,30.)", "(0,20,30)"), "(0.,0.,30.)", "(0,0,30)"), kSheet},
        {"a description that is not there",
         Changed(good, "FILE_DESCRIPTION(('Open CASCADE Model'),'2;1');", ""), kSheet},
        {"a schema that nobody knows",
         Changed(good, "AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }", "WINDMILLS"), kSheet},
        {"a header without content", "ISO-10303-21;\nHEADER;\nENDSEC;\n" + good.mid(good.indexOf("DATA;")),
         kSheet},
    };
}

QList<QByteArray> Lines(const QByteArray& iges)
{
    return iges.split('\n');
}

/// Without the first line of the section.
QByteArray Without(const QByteArray& iges, char section)
{
    QList<QByteArray> lines = Lines(iges);
    for (int i = 0; i < lines.size(); ++i) {
        if (lines[i].size() > 72 && lines[i][72] == section) {
            lines.removeAt(i);
            break;
        }
    }
    return lines.join('\n');
}

/// With the first line of the section twice.
QByteArray Doubled(const QByteArray& iges, char section)
{
    QList<QByteArray> lines = Lines(iges);
    for (int i = 0; i < lines.size(); ++i) {
        if (lines[i].size() > 72 && lines[i][72] == section) {
            lines.insert(i, lines[i]);
            break;
        }
    }
    return lines.join('\n');
}

template<typename Change>
QByteArray EachLine(const QByteArray& iges, const Change& change)
{
    QList<QByteArray> lines = Lines(iges);
    for (QByteArray& line : lines) {
        if (!line.isEmpty())
            line = change(line);
    }
    return lines.join('\n');
}

MalformedRows IgesStructure()
{
    const QByteArray good = Iges();
    const int terminate = good.lastIndexOf("\nS") + 1;
    return {
        {"an empty file", "", kRefused},
        {"a file of blanks", QByteArray(800, ' '), kRefused},
        {"a file of zeros", QByteArray(800, '\0'), kRefused},
        {"a file of ones", QByteArray(800, '\xff'), kRefused},
        {"a file of STEP", Step(), kRefused},
        {"no start section", Without(good, 'S'), kRefused},
        {"a global line too few", Without(good, 'G'), kRefused},
        {"a directory line too few", Without(good, 'D'), kRefused},
        {"a parameter line too few", Without(good, 'P'), kRefused},
        {"no terminate record", Without(good, 'T'), kRefused},
        {"a start line twice", Doubled(good, 'S'), kRefused},
        {"a global line twice", Doubled(good, 'G'), kRefused},
        {"a directory line twice", Doubled(good, 'D'), kRefused},
        {"a parameter line twice", Doubled(good, 'P'), kRefused},
        {"a terminate record twice", Doubled(good, 'T'), kSheet},
        {"a terminate record in front", good.mid(terminate) + good, kRefused},
        {"a file cut behind its start section", good.left(81), kRefused},
        {"a file cut behind its global section", good.left(5 * 81), kRefused},
        {"a file cut within its directory", good.left(12 * 81), kRefused},
        {"a file cut behind its directory", good.left((5 + 26) * 81), kRefused},
        {"a file cut within its parameters", good.left((5 + 26 + 7) * 81 + 40), kRefused},
        {"a terminate record without its letter", good.left(terminate + 72), kRefused},
        {"a terminate record without its number", good.left(terminate + 73), kRefused},
        {"a start section that is counted wrong", Overwritten(good, terminate, "S      2"), kRefused},
        {"a global section that is counted wrong", Overwritten(good, terminate + 8, "G      3"), kRefused},
        {"a directory that is counted wrong", Overwritten(good, terminate + 16, "D     28"), kRefused},
        {"parameters that are counted wrong", Overwritten(good, terminate + 24, "P     12"), kRefused},
        {"a count beyond 32 bits", Overwritten(good, terminate + 24, "P9999999"), kRefused},
        {"a negative count", Overwritten(good, terminate + 24, "P    -13"), kRefused},
        {"a count that is a word", Overwritten(good, terminate + 24, "P   many"), kRefused},
        {"counts of blanks", Overwritten(good, terminate, QByteArray(32, ' ')), kRefused},
        {"counts in another order", Overwritten(good, terminate, "G      4S      1"), kRefused},
        {"zeros for the blanks of the counts", Overwritten(good, terminate, Bytes("S\0\0\0\0\0\0001")),
         kRefused},
        {"counts with digits 0 in front", Overwritten(good, terminate, "S0000001G0000004"), kSheet},
        {"bytes behind the terminate record", good + "surplus\n", kSheet},
        {"a file twice", good + good, kSheet},
    };
}

MalformedRows IgesText()
{
    const QByteArray good = Iges();
    return {
        {"two bytes a character", Utf16(good), kRefused},
        {"letters of sections in small letters",
         EachLine(good, [](const QByteArray& line) { return line.left(72) + line.mid(72).toLower(); }),
         kRefused},
        {"lines of 72 columns", EachLine(good, [](const QByteArray& line) { return line.left(72); }),
         kRefused},
        {"a blank in front of each line", EachLine(good, [](const QByteArray& line) { return ' ' + line; }),
         kRefused},
        {"lines without their first column",
         EachLine(good, [](const QByteArray& line) { return line.mid(1); }), kRefused},
        {"a tab for the blanks at the end of the terminate record",
         Changed(good, QByteArray(40, ' ') + "T", "\tT"), kRefused},
        {"a line of compressed files in front", QByteArray(72, ' ') + "C0000001\n" + good, kRefused},
        {"a flag of binary files in front", QByteArray(72, ' ') + "B0000001\n" + good, kRefused},
        {"both characters for a line end", Changed(good, "\n", "\r\n"), kSheet},
        {"carriage returns for line ends", Changed(good, "\n", "\r"), kSheet},
        {"no line ends", Changed(good, "\n", ""), kSheet},
        {"blank lines between all lines", Changed(good, "\n", "\n\n"), kSheet},
        {"no line end at the end", good.left(good.size() - 1), kSheet},
        {"text behind the columns", Changed(good, "\n", "   and more\n"), kSheet},
    };
}

} // namespace

TEST(MalformedSTEP, DamagedSectionsGiveTheirResults)
{
    ExpectResults(StepStructure(), "sheet.step", Read);
}

TEST(MalformedSTEP, OddTextsGiveTheirResults)
{
    ExpectResults(StepText(), "sheet.step", Read);
}

TEST(MalformedSTEP, HasItsRows)
{
    ExpectRowCount({StepStructure(), StepText()}, kStepRowCount);
}

TEST(MalformedIGES, DamagedSectionsGiveTheirResults)
{
    ExpectResults(IgesStructure(), "sheet.iges", Read);
}

TEST(MalformedIGES, OddTextsGiveTheirResults)
{
    ExpectResults(IgesText(), "sheet.iges", Read);
}

TEST(MalformedIGES, HasItsRows)
{
    ExpectRowCount({IgesStructure(), IgesText()}, kIgesRowCount);
}
