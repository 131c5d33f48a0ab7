#include "apps/krmodel/TextTable.h"

#include <gtest/gtest.h>

namespace {

TEST(TextTable, AlignsNamesToTheLeftAndNumbersToTheRight)
{
    krmodel::TextTable table;
    table.AddRow({QStringLiteral("x"), QStringLiteral("-1.5"), QStringLiteral("22")});
    table.AddRow({QStringLiteral("height"), QStringLiteral("0"), QStringLiteral("1")});
    EXPECT_EQ(table.ToString(), QStringLiteral("  x       -1.5  22\n"
                                               "  height     0   1\n"));
}

TEST(TextTable, ARemarkBesideANameWidensNoColumn)
{
    krmodel::TextTable table;
    table.AddRow({QStringLiteral("a"), QStringLiteral("a long remark")});
    table.AddRow({QStringLiteral("b"), QStringLiteral("1"), QStringLiteral("2")});
    EXPECT_EQ(table.ToString(), QStringLiteral("  a  a long remark\n"
                                               "  b  1  2\n"));
}

TEST(TextTable, PutsTheColumnsToTheSideAskedForAndEndsLinesWithoutBlanks)
{
    krmodel::TextTable table("rl");
    table.AddRow({QStringLiteral("1"), QStringLiteral("one"), QStringLiteral("3")});
    table.AddRow({QStringLiteral("12"), QStringLiteral("a"), QString()});
    EXPECT_EQ(table.ToString(), QStringLiteral("   1  one  3\n"
                                               "  12  a\n"));
}

TEST(TextTable, WithoutRowsIsEmpty)
{
    EXPECT_EQ(krmodel::TextTable().ToString(), QString());
}

} // namespace
