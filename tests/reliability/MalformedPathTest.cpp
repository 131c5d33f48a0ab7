#include <cmath>
#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "fileformat/path/DXFPathFile.h"
#include "tests/common/Bytes.h"
#include "tests/path/PathBytes.h"
#include "tests/reliability/MalformedRows.h"

namespace {

using namespace test;

constexpr std::size_t kRowCount = 75;

/// UTF-8, which cannot hold half of a pair: that by its number.
std::string TextOf(const QString& name)
{
    std::string text;
    for (const QChar unit : name) {
        if (unit.isSurrogate())
            text += '<' + QByteArray::number(unit.unicode(), 16).toStdString() + '>';
        else
            text += QString(unit).toStdString();
    }
    return text;
}

/// Each set as its id, its name and its contours, points by their coordinates.
std::string Read(const QString& path)
{
    Paths paths = {{1, {{{7, 8}}}}};
    std::map<int, QString> names = {{1, QStringLiteral("old")}};
    if (!DXFPathFile::ReadDXFPathFile(paths, names, path)) {
        EXPECT_TRUE(paths.empty() && names.empty());
        return kRefused;
    }
    EXPECT_EQ(paths.size(), names.size());
    std::ostringstream text;
    text.precision(17);
    for (const auto& [id, contours] : paths) {
        text << '[' << id << ' ' << TextOf(names.at(id));
        for (const DXFPathFile::Contour& contour : contours) {
            text << " (";
            for (const Point& point : contour)
                text << point.x << ' ' << point.y << ';';
            text << ')';
        }
        text << ']';
    }
    return text.str();
}

PathBytes Integers(std::initializer_list<std::int32_t> values)
{
    return PathBytes().Integers(values);
}

/// One set with the id 1 and this as its name.
QByteArray Named(const QByteArray& name)
{
    return Integers({1, 1, name.size()}).Text(name).Integers({0});
}

/// One set without a name, its only contour of one point.
QByteArray OnePoint(double x, double y)
{
    return Integers({1, 1, 0, 1, 1}).Reals({x, y});
}

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();

MalformedRows Cuts()
{
    const QByteArray small = SmallFile();
    return {
        {"an empty file", "", kRefused},
        {"half of the set count", small.left(2), kRefused},
        {"nothing behind the set count", small.left(4), kRefused},
        {"half of an id", small.left(6), kRefused},
        {"nothing behind an id", small.left(8), kRefused},
        {"half of a name's length", small.left(11), kRefused},
        {"nothing behind a name's length", small.left(12), kRefused},
        {"a name without its last letter", small.left(19), kRefused},
        {"nothing behind a name", small.left(20), kRefused},
        {"half of a contour count", small.left(22), kRefused},
        {"nothing behind a contour count", small.left(24), kRefused},
        {"half of a point count", small.left(27), kRefused},
        {"nothing behind a point count", small.left(28), kRefused},
        {"half of an x", small.left(32), kRefused},
        {"a point without its y", small.left(36), kRefused},
        {"a point without its last byte", small.left(43), kRefused},
        {"nothing behind the first contour", small.left(44), kRefused},
        {"one of two points", small.left(64), kRefused},
        {"one of two sets", small.left(80), kRefused},
        {"a last point count without its last byte", small.left(small.size() - 1), kRefused},
        {"no point count for the last contour", small.left(small.size() - 4), kRefused},
    };
}

MalformedRows Counts()
{
    const QByteArray point = PathBytes().Reals({3, 4});
    return {
        {"no sets and bytes behind them", Integers({0}).Text("surplus"), ""},
        {"a set count of -1", Integers({-1, 1, 0, 0}), ""},
        {"the lowest set count", Integers({kLowest, 1, 0, 0}), ""},
        {"the largest set count", Integers({kLargest, 1, 0, 0}), kRefused},
        {"a set count with its high byte first", Integers({0x01000000, 1, 0, 0}), kRefused},
        {"a set count that is one too large", Integers({2, 1, 0, 0}), kRefused},
        {"a set count that is one too small", Integers({1, 1, 0, 0, 2, 0, 0}), "[1 ]"},
        {"a contour count of -1", Integers({1, 1, 0, -1}), "[1 ]"},
        {"the lowest contour count", Integers({1, 1, 0, kLowest}), "[1 ]"},
        {"the largest contour count", Integers({1, 1, 0, kLargest, 0}), kRefused},
        {"a contour count that is one too large", Integers({1, 1, 0, 2, 0}), kRefused},
        {"a contour count that is one too small, at the end", Integers({1, 1, 0, 1, 0, 0}), "[1  ()]"},
        {"a contour count that is one too small, in front of a set", Integers({2, 1, 0, 1, 0, 0, 2, 0, 0}),
         "[0 ][1  ()]"},
        {"a negative contour count in front of a set", Integers({2, 1, 0, -5, 2, 0, 0}), "[1 ][2 ]"},
        {"a point count of -1", Integers({1, 1, 0, 1, -1}), "[1  ()]"},
        {"the lowest point count", Integers({1, 1, 0, 1, kLowest}), "[1  ()]"},
        {"the largest point count", Integers({1, 1, 0, 1, kLargest}).Text(point), kRefused},
        {"a point count whose bytes wrap to none", Integers({1, 1, 0, 1, 0x10000000}), kRefused},
        {"a point count whose bytes wrap to those of one", Integers({1, 1, 0, 1, 0x10000001}).Text(point),
         kRefused},
        {"a point count that is one too large", Integers({1, 1, 0, 1, 2}).Text(point), kRefused},
        {"a point count that is one too small", Integers({1, 1, 0, 1, 1}).Text(point + point), "[1  (3 4;)]"},
        {"a negative point count in front of a contour", Integers({1, 1, 0, 2, -9, 1}).Text(point),
         "[1  () (3 4;)]"},
    };
}

MalformedRows Sets()
{
    return {
        {"an id twice",
         Integers({2, 5, 4}).Text("QQA=").Integers({1, 0, 5, 4}).Text("QgA=").Integers({2, 0, 0}),
         "[5 B () ()]"},
        {"an id twice, without a name the second time",
         Integers({2, 5, 4}).Text("QQA=").Integers({1, 0, 5, 0, 0}), "[5 ]"},
        {"ids in falling order", Integers({3, 9, 0, 0, 2, 0, 0, -4, 0, 0}), "[-4 ][2 ][9 ]"},
        {"the lowest and the largest id", Integers({2, kLargest, 0, 0, kLowest, 0, 0}),
         "[-2147483648 ][2147483647 ]"},
        {"a file of zeros", QByteArray(64, '\0'), ""},
        {"a file of ones", QByteArray(64, '\xff'), ""},
        {"a file of text", "0\nSECTION\n2\nENTITIES\n0\nENDSEC\n0\nEOF\n", kRefused},
        {"a byte-order mark in front", "\xef\xbb\xbf" + QByteArray(SmallFile()), kRefused},
        {"line ends that were translated", QByteArray(Integers({1, 10, 0, 0})).replace("\n", "\r\n"),
         "[2573 ]"},
        {"a whole file twice", QByteArray(SmallFile()).repeated(2),
         "[-7 A\xc3\x84 (0.5 -2;) (1 2;3 4;)][9  ()]"},
    };
}

MalformedRows Names()
{
    return {
        {"a name's length of -1", Integers({1, 1, -1, 0}), "[1 ]"},
        {"the lowest length of a name", Integers({1, 1, kLowest, 0}), "[1 ]"},
        {"the largest length of a name", Integers({1, 1, kLargest}).Text("QQA="), kRefused},
        {"a length that is one too large, so that the name takes a byte of the count",
         Integers({1, 1, 5}).Text("QQA=").Integers({0}), kRefused},
        {"a length that is four too large, so that the name takes the count",
         Integers({1, 1, 8}).Text("QQA=").Integers({0}), kRefused},
        {"a length that is four too small, so that letters are a count",
         Integers({1, 1, 4}).Text("QQBBAA==").Integers({0}), kRefused},
        {"a name without padding", Named("QQA"), "[1 A]"},
        {"a name with padding in its middle", Named("QQA=QgA="), "[1 A\xe8\x80\x90]"},
        {"a name of padding alone", Named("===="), "[1 ]"},
        {"a name of one letter, which is no byte", Named("Q"), "[1 ]"},
        {"a name of an odd number of bytes", Named("QQBC"), "[1 AB]"},
        {"a name of one byte", Named("QQ=="), "[1 A]"},
        {"blanks and line ends in a name", Named("QQ\r\n A="), "[1 A]"},
        {"zeros in a name", Named(Bytes("QQ\0A=")), "[1 A]"},
        {"letters of no alphabet in a name", Named("\xff!QQA=$"), "[1 A]"},
        {"a name in plain text", Named("(((("), "[1 ]"},
        {"half of a pair of units in a name", Named("PdgBAA=="), "[1 <d83d>\x01]"},
    };
}

MalformedRows Points()
{
    using Limits = std::numeric_limits<double>;
    return {
        {"a coordinate that is no number", OnePoint(Limits::quiet_NaN(), 1), "[1  (nan 1;)]"},
        {"infinite coordinates", OnePoint(Limits::infinity(), -Limits::infinity()), "[1  (inf -inf;)]"},
        {"the smallest coordinates", OnePoint(Limits::denorm_min(), -Limits::denorm_min()),
         "[1  (4.9406564584124654e-324 -4.9406564584124654e-324;)]"},
        {"the largest coordinates", OnePoint(Limits::max(), Limits::lowest()),
         "[1  (1.7976931348623157e+308 -1.7976931348623157e+308;)]"},
        {"a zero with a sign", OnePoint(-0.0, 0), "[1  (-0 0;)]"},
    };
}

} // namespace

TEST(MalformedPath, FilesThatAreCutShortGiveTheirResults)
{
    ExpectResults(Cuts(), "cut.path", Read);
}

TEST(MalformedPath, WrongCountsGiveTheirResults)
{
    ExpectResults(Counts(), "cut.path", Read);
}

TEST(MalformedPath, DamagedSetsGiveTheirResults)
{
    ExpectResults(Sets(), "cut.path", Read);
}

TEST(MalformedPath, DamagedNamesGiveTheirResults)
{
    ExpectResults(Names(), "cut.path", Read);
}

TEST(MalformedPath, OddCoordinatesGiveTheirResults)
{
    ExpectResults(Points(), "cut.path", Read);
}

TEST(MalformedPath, HasItsRows)
{
    ExpectRowCount({Cuts(), Counts(), Sets(), Names(), Points()}, kRowCount);
}
