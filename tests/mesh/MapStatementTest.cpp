#include "core/mesh/MapStatement_p.h"

#include <random>

#include <gtest/gtest.h>

namespace {

QStringList NamesIn(const char* statement)
{
    return kr::FileNamesOfMapStatement(
        QString::fromUtf8(statement).split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

QStringList List(std::initializer_list<const char*> texts)
{
    QStringList list;
    for (const char* text : texts)
        list.append(QString::fromUtf8(text));
    return list;
}

QStringList PathsOf(const char* fileName, const char* directory)
{
    return kr::PathsOfMapFile(QString::fromUtf8(fileName), QString::fromUtf8(directory));
}

struct Case {
    const char* statement;
    const char* name;
};

void PrintTo(const Case& tested, std::ostream* out)
{
    *out << tested.statement;
}

class MapStatementOptions : public testing::TestWithParam<Case> {};

} // namespace

TEST(MapStatement, FileNameFollowsTheKeyword)
{
    EXPECT_EQ(NamesIn("map_Kd wood.png"), List({"wood.png"}));
}

TEST(MapStatement, FileNameMayHoldBlanks)
{
    EXPECT_EQ(NamesIn("map_Kd my dark wood.png"), List({"my dark wood.png"}));
}

TEST(MapStatement, QuotesAroundTheFileNameAreDropped)
{
    EXPECT_EQ(NamesIn("map_Kd \"my dark wood.png\""), List({"my dark wood.png"}));
    EXPECT_EQ(NamesIn("map_Kd \"wood.png\""), List({"wood.png"}));
    EXPECT_EQ(NamesIn("map_Kd -s 2 \"2 woods.png\""), List({"2 woods.png"}));
}

TEST(MapStatement, LoneQuoteBelongsToTheName)
{
    EXPECT_EQ(NamesIn("map_Kd 5\"wood.png"), List({"5\"wood.png"}));
    EXPECT_EQ(NamesIn("map_Kd \"wood.png"), List({"\"wood.png"}));
    EXPECT_EQ(NamesIn("map_Kd \""), List({"\""}));
}

TEST(MapStatement, BackslashesSeparateDirectories)
{
    EXPECT_EQ(NamesIn("map_Kd textures\\dark\\wood.png"), List({"textures/dark/wood.png"}));
}

TEST(MapStatement, WithoutFileNameNamesNone)
{
    EXPECT_TRUE(NamesIn("").isEmpty());
    EXPECT_TRUE(NamesIn("map_Kd").isEmpty());
    EXPECT_TRUE(NamesIn("map_Kd \"\"").isEmpty());
}

TEST_P(MapStatementOptions, ArePassedOver)
{
    const QStringList names = NamesIn(GetParam().statement);
    ASSERT_FALSE(names.isEmpty());
    EXPECT_EQ(names.front(), QString::fromUtf8(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(
    All, MapStatementOptions,
    testing::Values(
        Case{"map_Kd -s 2 wood.png", "wood.png"}, Case{"map_Kd -s 2 2 wood.png", "wood.png"},
        Case{"map_Kd -s 2 2 1 wood.png", "wood.png"}, Case{"map_Kd -o 0.5 -.5 +1e-1 wood.png", "wood.png"},
        Case{"map_Kd -t 1. wood.png", "wood.png"}, Case{"map_Kd -mm 0 1 wood.png", "wood.png"},
        Case{"bump -bm 0.5 wood.png", "wood.png"}, Case{"map_Kd -blendu on wood.png", "wood.png"},
        Case{"map_Kd -blendv off wood.png", "wood.png"}, Case{"map_Kd -clamp on wood.png", "wood.png"},
        Case{"map_Kd -cc off wood.png", "wood.png"}, Case{"map_Kd -boost 3 wood.png", "wood.png"},
        Case{"map_Kd -texres 512 wood.png", "wood.png"}, Case{"bump -imfchan l wood.png", "wood.png"},
        Case{"refl -type sphere wood.png", "wood.png"}, Case{"map_Kd -CLAMP on wood.png", "wood.png"},
        Case{"map_Kd -s 1 1 1 -o 0 0 0 -mm 0 1 -clamp on my wood.png", "my wood.png"},
        Case{"map_Kd -clamp on -s 1 -bm 2 wood.png", "wood.png"}));

INSTANTIATE_TEST_SUITE_P(
    NumbersBesideNames, MapStatementOptions,
    testing::Values(Case{"map_Kd 2.png", "2.png"}, Case{"map_Kd -s 1 1 1 2.png", "2.png"},
                    Case{"map_Kd -s 1 2.png", "2.png"}, Case{"map_Kd -s 1 1 1 2 3.png", "2 3.png"},
                    Case{"map_Kd -bm 1 2 woods.png", "2 woods.png"}, Case{"map_Kd -s 1 2 3", "3"},
                    Case{"map_Kd 7", "7"}, Case{"map_Kd -s 1 nan", "nan"},
                    Case{"map_Kd -s 1 inf wood.png", "inf wood.png"},
                    Case{"map_Kd -s 1 1e3d wood.png", "1e3d wood.png"},
                    Case{"map_Kd -s wood.png", "wood.png"}, Case{"map_Kd -mm 1 wood.png", "wood.png"}));

INSTANTIATE_TEST_SUITE_P(
    LeadingHyphens, MapStatementOptions,
    testing::Values(Case{"map_Kd -wood.png", "-wood.png"}, Case{"map_Kd -5 wood.png", "-5 wood.png"},
                    Case{"map_Kd -clamp on -wood.png", "-wood.png"},
                    Case{"map_Kd dark -s wood.png", "dark -s wood.png"},
                    Case{"map_Kd - wood.png", "- wood.png"}, Case{"map_Kd -clamp", "-clamp"},
                    Case{"map_Kd -new 1 2 wood.png", "wood.png"}, Case{"map_Kd -new on wood.png", "wood.png"},
                    Case{"map_Kd -new off wood.png", "wood.png"},
                    Case{"map_Kd -new -s 1 wood.png", "wood.png"}));

TEST(MapStatement, NumbersThatAnOptionNeedNotHaveMayBeginTheName)
{
    EXPECT_EQ(NamesIn("map_Kd -s 2 2 oaks.png"), List({"oaks.png", "2 oaks.png"}));
    EXPECT_EQ(NamesIn("map_Kd -o 1 2 3 oaks.png"), List({"oaks.png", "3 oaks.png", "2 3 oaks.png"}));
    EXPECT_EQ(NamesIn("map_Kd -mm 1 2 oaks.png"), List({"oaks.png"}));
    EXPECT_EQ(NamesIn("map_Kd -s 1 1 -bm 2 oaks.png"), List({"oaks.png"}));
}

TEST(MapStatement, WordThatIsNoOptionMayBeginTheName)
{
    EXPECT_EQ(NamesIn("map_Kd -old 2 oaks.png"), List({"oaks.png", "2 oaks.png", "-old 2 oaks.png"}));
}

TEST(MapStatement, NamesAreTailsOfTheStatementTheShortestFirst)
{
    const QStringList words =
        List({"-s", "-clamp", "-new", "-", "on", "1", "-2.5", "a.png", "\"b", "c\"", "-mm"});
    std::mt19937 random(41);
    for (int round = 0; round < 20000; ++round) {
        QStringList tokens = {QStringLiteral("map_Kd")};
        for (int count = int(random() % 9); count > 0; --count)
            tokens += words[int(random() % 11)];
        const QString statement = tokens.join(QLatin1Char(' '));
        const QStringList names = kr::FileNamesOfMapStatement(tokens);
        ASSERT_EQ(names.isEmpty(), tokens.size() == 1) << statement.toStdString();
        ASSERT_LE(names.size(), 5);
        for (int i = 0; i < names.size(); ++i) {
            const bool isQuoted = statement.endsWith(QLatin1Char('"') + names[i] + QLatin1Char('"'));
            ASSERT_TRUE(isQuoted || statement.endsWith(QLatin1Char(' ') + names[i]))
                << statement.toStdString();
            ASSERT_TRUE(i == 0 || names[i].size() > names[i - 1].size()) << statement.toStdString();
        }
    }
}

TEST(MapStatement, NamesFewWhateverTheLengthOfTheLine)
{
    QStringList tokens = {QStringLiteral("map_Kd")};
    for (int i = 0; i < 100000; ++i)
        tokens += {QStringLiteral("-s"), QStringLiteral("1")};
    tokens += QStringLiteral("wood.png");
    EXPECT_EQ(kr::FileNamesOfMapStatement(tokens), List({"wood.png"}));
}

TEST(MapFile, IsLookedUpInTheDirectory)
{
    EXPECT_EQ(PathsOf("wood.png", "/models/"), List({"/models/wood.png"}));
    EXPECT_EQ(PathsOf("wood.png", ""), List({"wood.png"}));
}

TEST(MapFile, OfAnotherFolderIsLookedForBesideTheLibraryToo)
{
    EXPECT_EQ(PathsOf("../textures/wood.png", "/models/"),
              List({"/models/../textures/wood.png", "/models/wood.png"}));
}

TEST(MapFile, WithAnAbsolutePathIsLookedUpThereFirst)
{
    EXPECT_EQ(PathsOf("/textures/wood.png", "/models/"), List({"/textures/wood.png", "/models/wood.png"}));
    EXPECT_EQ(PathsOf("C:/textures/wood.png", "/models/"),
              List({"C:/textures/wood.png", "/models/wood.png"}));
    EXPECT_EQ(PathsOf("//server/textures/wood.png", "/models/"),
              List({"//server/textures/wood.png", "/models/wood.png"}));
}
