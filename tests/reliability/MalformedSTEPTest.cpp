#include <gtest/gtest.h>

#include "tests/reliability/MalformedRows.h"
#include "tests/reliability/MalformedSheet.h"

namespace {

using namespace test;

constexpr std::size_t kRowCount = 49;

/// The bytes in front of the first @p text.
QByteArray Before(const QByteArray& bytes, const QByteArray& text)
{
    EXPECT_TRUE(bytes.contains(text)) << text.constData();
    return bytes.left(bytes.indexOf(text));
}

MalformedRows Structure()
{
    const QByteArray good = SheetAsSTEP();
    const QByteArray header = Before(good, "DATA;");
    const QByteArray end = "ENDSEC;\nEND-ISO-10303-21;\n";
    return {
        {"an empty file", "", kRefused},
        {"a file of blanks", QByteArray(300, ' '), kRefused},
        {"a file of zeros", QByteArray(300, '\0'), kRefused},
        {"a file of ones", QByteArray(300, '\xff'), kRefused},
        {"a text of STL", "solid x\nendsolid x\n", kRefused},
        {"a file of IGES", SheetAsIGES(), kRefused},
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

MalformedRows Texts()
{
    const QByteArray good = SheetAsSTEP();
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

} // namespace

TEST(MalformedSTEP, DamagedSectionsGiveTheirResults)
{
    ExpectResults(Structure(), "sheet.step", ReadSheet);
}

TEST(MalformedSTEP, OddTextsGiveTheirResults)
{
    ExpectResults(Texts(), "sheet.step", ReadSheet);
}

TEST(MalformedSTEP, HasItsRows)
{
    ExpectRowCount({Structure(), Texts()}, kRowCount);
}
