#include <QList>

#include <gtest/gtest.h>

#include "tests/common/Bytes.h"
#include "tests/reliability/MalformedRows.h"
#include "tests/reliability/MalformedSheet.h"

namespace {

using namespace test;

constexpr std::size_t kRowCount = 50;

QList<QByteArray> Lines(const QByteArray& iges)
{
    return iges.split('\n');
}

/// The section of a line is a letter in column 73.
int FirstLineOf(const QList<QByteArray>& lines, char section)
{
    for (int i = 0; i < lines.size(); ++i) {
        if (lines[i].size() > 72 && lines[i][72] == section)
            return i;
    }
    ADD_FAILURE() << "no section " << section;
    return 0;
}

/// Without the first line of the section.
QByteArray Without(const QByteArray& iges, char section)
{
    QList<QByteArray> lines = Lines(iges);
    lines.removeAt(FirstLineOf(lines, section));
    return lines.join('\n');
}

/// With the first line of the section twice.
QByteArray Doubled(const QByteArray& iges, char section)
{
    QList<QByteArray> lines = Lines(iges);
    const int first = FirstLineOf(lines, section);
    lines.insert(first, QByteArray(lines[first]));
    return lines.join('\n');
}

/// With every line changed.
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

MalformedRows Structure()
{
    const QByteArray good = SheetAsIGES();
    const int terminate = good.lastIndexOf("\nS") + 1;
    return {
        {"an empty file", "", kRefused},
        {"a file of blanks", QByteArray(800, ' '), kRefused},
        {"a file of zeros", QByteArray(800, '\0'), kRefused},
        {"a file of ones", QByteArray(800, '\xff'), kRefused},
        {"a file of STEP", SheetAsSTEP(), kRefused},
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

MalformedRows Texts()
{
    const QByteArray good = SheetAsIGES();
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

TEST(MalformedIGES, DamagedSectionsGiveTheirResults)
{
    ExpectResults(Structure(), "sheet.iges", ReadSheet);
}

TEST(MalformedIGES, OddTextsGiveTheirResults)
{
    ExpectResults(Texts(), "sheet.iges", ReadSheet);
}

TEST(MalformedIGES, HasItsRows)
{
    ExpectRowCount({Structure(), Texts()}, kRowCount);
}
