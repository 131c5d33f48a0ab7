#include "core/utility/Utility.h"

#include <gtest/gtest.h>

#include <QDate>
#include <QLocale>
#include <QStringList>
#include <QTime>

#include <random>

namespace {

QString Text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QStringList Split(const QString& text, const QString& separator)
{
    std::vector<QString> pieces;
    Utility::SplitString(pieces, text, separator);
    return QStringList(pieces.begin(), pieces.end());
}

QStringList Split(const char* text, const char* separator)
{
    return Split(Text(text), Text(separator));
}

QStringList Pieces(std::initializer_list<const char*> pieces)
{
    QStringList list;
    for (const char* piece : pieces)
        list.append(Text(piece));
    return list;
}

} // namespace

TEST(UtilitySplit, SplitsAtEveryOccurrence)
{
    EXPECT_EQ(Split("1/2/3", "/"), Pieces({"1", "2", "3"}));
    EXPECT_EQ(Split("1//3", "//"), Pieces({"1", "3"}));
    EXPECT_EQ(Split("plain", "/"), Pieces({"plain"}));
}

TEST(UtilitySplit, KeepsEmptyPieces)
{
    EXPECT_EQ(Split("5/", "/"), Pieces({"5", ""}));
    EXPECT_EQ(Split("/", "/"), Pieces({"", ""}));
    EXPECT_EQ(Split("/5//6/", "/"), Pieces({"", "5", "", "6", ""}));
    EXPECT_EQ(Split("", "/"), Pieces({""}));
}

TEST(UtilitySplit, TakesSeparatorsFromTheLeftWithoutOverlap)
{
    EXPECT_EQ(Split("1///2", "//"), Pieces({"1", "/2"}));
    EXPECT_EQ(Split("aaaaa", "aa"), Pieces({"", "", "a"}));
}

TEST(UtilitySplit, SplitsNowhereAtAnEmptySeparator)
{
    EXPECT_EQ(Split("abc", ""), Pieces({"abc"}));
    EXPECT_EQ(Split("", ""), Pieces({""}));
}

TEST(UtilitySplit, TellsUpperFromLowerCase)
{
    EXPECT_EQ(Split("1x2X3", "x"), Pieces({"1", "2X3"}));
}

TEST(UtilitySplit, EmptiesTheListFirst)
{
    std::vector<QString> pieces(5, Text("old"));
    Utility::SplitString(pieces, Text("a/b"), Text("/"));
    EXPECT_EQ(pieces, (std::vector<QString>{Text("a"), Text("b")}));
}

TEST(UtilitySplit, AcceptsElementsOfTheListAsArguments)
{
    std::vector<QString> pieces{Text("a/b/c"), Text("/")};
    Utility::SplitString(pieces, pieces[0], pieces[1]);
    EXPECT_EQ(pieces, (std::vector<QString>{Text("a"), Text("b"), Text("c")}));
}

TEST(UtilitySplit, GivesPiecesThatJoinToTheText)
{
    std::mt19937 random(5);
    for (int i = 0; i < 5000; ++i) {
        QString text;
        for (auto n = random() % 12; n > 0; --n)
            text += QLatin1Char("ab/"[random() % 3]);
        const QString separator = Text("//").left(1 + static_cast<int>(random() % 2));
        const QStringList pieces = Split(text, separator);
        EXPECT_EQ(pieces.join(separator), text);
        EXPECT_EQ(pieces, text.split(separator));
        for (const QString& piece : pieces)
            EXPECT_FALSE(piece.contains(separator));
    }
}

TEST(UtilityFileName, GivesTheDirectoryWithItsSeparator)
{
    EXPECT_EQ(Utility::GetFilePath(Text("/models/part.obj")), Text("/models/"));
    EXPECT_EQ(Utility::GetFilePath(Text("models/part.obj")), Text("models/"));
    EXPECT_EQ(Utility::GetFilePath(Text("../part.obj")), Text("../"));
    EXPECT_EQ(Utility::GetFilePath(Text("/part.obj")), Text("/"));
    EXPECT_EQ(Utility::GetFilePath(Text("models/")), Text("models/"));
    EXPECT_EQ(Utility::GetFilePath(Text("a//b/../c")), Text("a//b/../"));
}

TEST(UtilityFileName, GivesNoDirectoryForABareName)
{
    EXPECT_EQ(Utility::GetFilePath(Text("part.obj")), QString());
    EXPECT_EQ(Utility::GetFilePath(QString()), QString());
}

TEST(UtilityFileName, DropsTheLastExtension)
{
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text("/models/part.obj")), Text("part"));
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text("archive.tar.gz")), Text("archive.tar"));
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text("part")), Text("part"));
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text("part.")), Text("part"));
}

TEST(UtilityFileName, DropsAllExtensions)
{
    EXPECT_EQ(Utility::GetFileNameNoComplexExtension(Text("/models/a.b.c")), Text("a"));
    EXPECT_EQ(Utility::GetFileNameNoComplexExtension(Text("part.step")), Text("part"));
    EXPECT_EQ(Utility::GetFileNameNoComplexExtension(Text("part")), Text("part"));
    EXPECT_EQ(Utility::GetFileNameNoComplexExtension(Text("part..stp")), Text("part"));
}

TEST(UtilityFileName, LeavesDotsInDirectoriesAlone)
{
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text("/a.b/part")), Text("part"));
    EXPECT_EQ(Utility::GetFileNameNoComplexExtension(Text("../v1.2/part.stp")), Text("part"));
    EXPECT_EQ(Utility::GetFilePath(Text("/a.b/part")), Text("/a.b/"));
}

TEST(UtilityFileName, IsEmptyWhenTheNameIsAllExtension)
{
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text("/home/.bashrc")), QString());
    EXPECT_EQ(Utility::GetFileNameNoComplexExtension(Text(".bashrc")), QString());
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text(".tar.gz")), Text(".tar"));
    EXPECT_EQ(Utility::GetFileNameNoComplexExtension(Text(".tar.gz")), QString());
}

TEST(UtilityFileName, IsEmptyForADirectoryOrNothing)
{
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text("/models/")), QString());
    EXPECT_EQ(Utility::GetFileNameNoComplexExtension(QString()), QString());
}

TEST(UtilityFileName, KeepsBlanksAndUnicode)
{
    EXPECT_EQ(Utility::GetFilePath(Text("/Gr\xC3\xB6\xC3\x9F"
                                        "e \xE6\xA8\xA1/\xF0\x9F\xA7\x8A.stl")),
              Text("/Gr\xC3\xB6\xC3\x9F"
                   "e \xE6\xA8\xA1/"));
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text("d/ \xF0\x9F\xA7\x8A .x.stl")),
              Text(" \xF0\x9F\xA7\x8A .x"));
}

// On Unix a backslash is a letter like any other.
#ifndef Q_OS_WIN
TEST(UtilityFileName, TakesABackslashAsPartOfTheName)
{
    EXPECT_EQ(Utility::GetFilePath(Text("dir/a\\b.obj")), Text("dir/"));
    EXPECT_EQ(Utility::GetFileNameNoExtension(Text("a\\b.obj")), Text("a\\b"));
}
#endif

TEST(UtilityFileName, FallsIntoDirectoryNameAndExtension)
{
    std::mt19937 random(6);
    for (int i = 0; i < 5000; ++i) {
        QString path;
        for (auto n = random() % 10; n > 0; --n)
            path += QLatin1Char("ab./"[random() % 4]);
        const QString directory = Utility::GetFilePath(path);
        const QString name = path.mid(directory.size());
        EXPECT_FALSE(name.contains(QLatin1Char('/')));
        EXPECT_TRUE(directory.isEmpty() || directory.endsWith(QLatin1Char('/')));
        EXPECT_EQ(Utility::GetFileNameNoExtension(path),
                  name.section(QLatin1Char('.'), 0, name.contains(QLatin1Char('.')) ? -2 : -1));
        EXPECT_EQ(Utility::GetFileNameNoComplexExtension(path), name.section(QLatin1Char('.'), 0, 0));
    }
}

TEST(UtilityDate, FormatsTodayInAsciiDigits)
{
    // Midnight may pass while the test runs.
    const QDate before = QDate::currentDate();
    const std::string text = Utility::FormatDateString("dd-MM-yyyy");
    const QDate after = QDate::currentDate();
    const auto format = [](const QDate& date) {
        char expected[32];
        std::snprintf(expected, sizeof expected, "%02d-%02d-%04d", date.day(), date.month(), date.year());
        return std::string(expected);
    };
    EXPECT_TRUE(text == format(before) || text == format(after)) << text;
}

TEST(UtilityDate, FormatsNowInAsciiDigits)
{
    const QTime before = QTime::currentTime();
    const std::string text = Utility::FormatTimeString("HH:mm:ss");
    const QTime after = QTime::currentTime();
    ASSERT_EQ(text.size(), 8u);
    const QTime time = QTime::fromString(QString::fromStdString(text), QStringLiteral("HH:mm:ss"));
    ASSERT_TRUE(time.isValid()) << text;
    const int sinceBefore =
        (time.msecsSinceStartOfDay() / 1000 - before.msecsSinceStartOfDay() / 1000 + 86400) % 86400;
    const int span =
        (after.msecsSinceStartOfDay() / 1000 - before.msecsSinceStartOfDay() / 1000 + 86400) % 86400;
    EXPECT_LE(sinceBefore, span) << text;
}

TEST(UtilityDate, NamesMonthsInEnglish)
{
    const QDate before = QDate::currentDate();
    const std::string text = Utility::FormatDateString("dddd MMMM");
    const QDate after = QDate::currentDate();
    const auto format = [](const QDate& date) {
        return QLocale::c().dayName(date.dayOfWeek()) + QLatin1Char(' ') +
               QLocale::c().monthName(date.month());
    };
    const QString shown = QString::fromStdString(text);
    EXPECT_TRUE(shown == format(before) || shown == format(after)) << text;
}

TEST(UtilityDate, KeepsTextThatIsNotOfThePattern)
{
    EXPECT_EQ(Utility::FormatDateString(""), "");
    EXPECT_EQ(Utility::FormatTimeString(""), "");
    EXPECT_EQ(Utility::FormatDateString("HH:ss"), "HH:ss");
    EXPECT_EQ(Utility::FormatTimeString("dd.MM"), "dd.MM");
    EXPECT_EQ(Utility::FormatDateString("'Tag' \xC2\xB7"), "Tag \xC2\xB7");
}

TEST(UtilityUuid, AgreesWithPublishedExamples)
{
    const QUuid dns(Text("6ba7b810-9dad-11d1-80b4-00c04fd430c8"));
    EXPECT_EQ(Utility::CreateNewUUIDFromNameSpace(Text("www.example.com"), dns),
              QUuid(Text("2ed6657d-e927-568b-95e1-2665a8aea6a2")));
    EXPECT_EQ(Utility::CreateNewUUIDFromNameSpace(Text("python.org"), dns),
              QUuid(Text("886313e1-3b8a-5372-9b90-0c9aee199e5d")));
}

TEST(UtilityUuid, IsOfVersionFiveForEveryName)
{
    for (const char* name : {"", "untitled", "\xE6\xA8\xA1\xE6\xA0\xB7"}) {
        const QUuid uuid = Utility::CreateNewUUIDFromNameSpace(Text(name), QUuid());
        EXPECT_EQ(uuid.version(), QUuid::Sha1);
        EXPECT_EQ(uuid.variant(), QUuid::DCE);
    }
}

TEST(UtilityUuid, DiffersWithNameAndNameSpace)
{
    const QUuid one(Text("6ba7b810-9dad-11d1-80b4-00c04fd430c8"));
    const QUuid other(Text("6ba7b811-9dad-11d1-80b4-00c04fd430c8"));
    const QUuid uuid = Utility::CreateNewUUIDFromNameSpace(Text("wood"), one);
    EXPECT_EQ(uuid, Utility::CreateNewUUIDFromNameSpace(Text("wood"), one));
    EXPECT_NE(uuid, Utility::CreateNewUUIDFromNameSpace(Text("Wood"), one));
    EXPECT_NE(uuid, Utility::CreateNewUUIDFromNameSpace(Text("wood"), other));
}
