#include <cmath>
#include <limits>
#include <string>

#include <QFileInfo>

#include <gtest/gtest.h>

#include "tests/common/Directory.h"
#include "tests/path/PathBytes.h"

namespace {

using test::Directory;
using test::PathBytes;
using test::Paths;
using test::Point;
using Names = std::map<int, std::string>;

QByteArray FileOf(const Paths& paths, const Names& names)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.path"));
    EXPECT_TRUE(DXFPathFile::WriteDXFPathFile(paths, names, path));
    return Directory::Read(path);
}

/// The stored name of the only set of a file.
QByteArray StoredName(const std::string& name)
{
    const QByteArray bytes = FileOf({{1, {}}}, {{1, name}});
    return bytes.mid(12, bytes.size() - 16);
}

} // namespace

TEST(PathWriter, EmptyMapsGiveACountOfZero)
{
    EXPECT_EQ(FileOf({}, {}), QByteArray(4, '\0'));
}

TEST(PathWriter, WritesFieldByField)
{
    EXPECT_EQ(FileOf(test::SmallPaths(), {{-7, "A\xC3\x84"}}), QByteArray(test::SmallFile()));
}

TEST(PathWriter, NumbersAreLittleEndian)
{
    const QByteArray bytes = FileOf({{0x01020304, {{{1.0, -2.0}}}}}, {});
    EXPECT_EQ(bytes.toHex(), "0100000004030201000000000100000001000000000000000000f03f00000000000000c0");
}

TEST(PathWriter, SetWithoutANameHasNameLengthZero)
{
    EXPECT_EQ(FileOf({{5, {}}}, {}), QByteArray(PathBytes().Integers({1, 5, 0, 0})));
    EXPECT_EQ(FileOf({{5, {}}}, {{5, ""}}), QByteArray(PathBytes().Integers({1, 5, 0, 0})));
}

TEST(PathWriter, NameOfOneLetterIsStoredInFour)
{
    EXPECT_EQ(FileOf({{5, {}}}, {{5, "\xC3\x84"}}),
              QByteArray(PathBytes().Integers({1, 5, 4}).Text("xAA=").Integers({0})));
}

TEST(PathWriter, NameWithoutASetIsNotWritten)
{
    EXPECT_EQ(FileOf({{5, {}}}, {{4, "four"}, {6, "six"}}), FileOf({{5, {}}}, {}));
}

TEST(PathWriter, SetsAscendById)
{
    constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
    const Paths paths = {{kMost, {}}, {0, {}}, {-1, {}}, {kLeast, {}}};
    EXPECT_EQ(FileOf(paths, {}),
              QByteArray(PathBytes().Integers({4, kLeast, 0, 0, -1, 0, 0, 0, 0, 0, kMost, 0, 0})));
}

TEST(PathWriter, EmptyContourIsACountOfZero)
{
    EXPECT_EQ(FileOf({{1, {{}, {}}}}, {}), QByteArray(PathBytes().Integers({1, 1, 0, 2, 0, 0})));
}

TEST(PathWriter, NamesKeepZerosAndAllPlanes)
{
    EXPECT_EQ(StoredName(std::string("a\0b", 3)), "YQAAAGIA");
    EXPECT_EQ(StoredName("\xF0\x9F\xA7\x8A"), "PtjK3Q==");
}

TEST(PathWriter, DropsTheByteOrderMarkOfAName)
{
    EXPECT_EQ(StoredName("\xEF\xBB\xBF\xC3\x84"), "xAA=");
}

TEST(PathWriter, WhatIsNoUtf8BecomesTheReplacementCharacter)
{
    EXPECT_EQ(StoredName("\xFF"), "/f8="); // FD FF
}

TEST(PathWriter, LongNamesAreWrittenWhole)
{
    for (const std::size_t length : {1000u, 4096u, 100000u}) {
        const std::string name(length, 'x');
        const QByteArray expected =
            DXFPathFile::GetBase64StringFromUnicodeString(QString::fromStdString(name));
        EXPECT_EQ(StoredName(name), expected) << length;
    }
}

TEST(PathWriter, TooLongANameLeavesTheFileAsItWas)
{
    const Directory directory;
    const QString path = directory.Write("as it was");
    std::string name;
    name.resize(100'000'001, 'x');
    const Names names = {{1, name}};
    EXPECT_FALSE(DXFPathFile::WriteDXFPathFile({{1, {}}}, names, path));
    EXPECT_EQ(Directory::Read(path), "as it was");
    EXPECT_TRUE(DXFPathFile::WriteDXFPathFile({{2, {}}}, names, path)) << "that name is not written";
}

TEST(PathWriter, ReplacesALongerFile)
{
    const Directory directory;
    const QString path = directory.Write(QByteArray(100000, 'x'));
    ASSERT_TRUE(DXFPathFile::WriteDXFPathFile({}, {}, path));
    EXPECT_EQ(Directory::Read(path), QByteArray(4, '\0'));
}

TEST(PathWriter, FailsWhereNoFileCanBeOpened)
{
    const Directory directory;
    EXPECT_FALSE(DXFPathFile::WriteDXFPathFile({}, {}, QString()));
    EXPECT_FALSE(DXFPathFile::WriteDXFPathFile({}, {}, directory.Path(QString())));
    const QString path = directory.Path(QStringLiteral("missing/out.path"));
    EXPECT_FALSE(DXFPathFile::WriteDXFPathFile({}, {}, path));
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST(PathWriter, DoesNotReportWriteErrors)
{
    EXPECT_TRUE(DXFPathFile::WriteDXFPathFile(test::SmallPaths(), {}, QStringLiteral("/dev/full")));
}

TEST(PathWriter, FileNamesMayBeOfAnyLanguage)
{
    const Directory directory;
    const QString path = directory.Path(QString::fromUtf8("\xE6\xA8\xA1 \xF0\x9F\xA7\x8A.path"));
    ASSERT_TRUE(DXFPathFile::WriteDXFPathFile({}, {}, path));
    EXPECT_EQ(Directory::Read(path).size(), 4);
}
