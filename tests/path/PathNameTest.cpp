#include <random>

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include "fileformat/path/DXFPathFile.h"
#include "tests/common/Bytes.h"

namespace {

QByteArray Encoded(const QString& text)
{
    return DXFPathFile::GetBase64StringFromUnicodeString(text);
}

QString Decoded(const QByteArray& base64)
{
    return DXFPathFile::GetUnicodeStringFromBase64String(base64);
}

} // namespace

TEST(PathName, StoresTheLowByteFirst)
{
    EXPECT_EQ(Encoded(QString(QChar(0x00c4))), "xAA=");
    EXPECT_EQ(Encoded(QString(QChar(0x1234))), "NBI=");
    EXPECT_EQ(Decoded("xAA="), QString(QChar(0x00c4)));
    EXPECT_EQ(Decoded("NBI="), QString(QChar(0x1234)));
}

TEST(PathName, IsPaddedToWholeGroupsOfFour)
{
    EXPECT_EQ(Encoded(QStringLiteral("A")), "QQA=");
    EXPECT_EQ(Encoded(QStringLiteral("AB")), "QQBCAA==");
    EXPECT_EQ(Encoded(QStringLiteral("ABC")), "QQBCAEMA");
}

TEST(PathName, UsesTheStandardAlphabet)
{
    EXPECT_EQ(Encoded(QString(QChar(0xfffb))), "+/8=");
    EXPECT_EQ(Decoded("+/8="), QString(QChar(0xfffb)));
}

TEST(PathName, EmptyTextIsEmpty)
{
    EXPECT_EQ(Encoded(QString()), QByteArray());
    EXPECT_EQ(Encoded(QStringLiteral("")), QByteArray());
    EXPECT_EQ(Decoded(QByteArray()), QString());
}

TEST(PathName, KeepsSurrogatePairsAndLoneHalves)
{
    const QString pair = QString::fromUtf8("\xF0\x9F\xA7\x8A"); // U+1F9CA is D83E DDCA
    EXPECT_EQ(Encoded(pair), "PtjK3Q==");
    EXPECT_EQ(Decoded("PtjK3Q=="), pair);
    for (const ushort half : {ushort(0xd83e), ushort(0xddca)}) {
        const QString text = QString(QChar(half)) + QLatin1Char('x');
        EXPECT_EQ(Decoded(Encoded(text)), text);
    }
}

TEST(PathName, KeepsZeroUnits)
{
    const QString text = QStringLiteral("a") + QChar(QChar::Null) + QStringLiteral("b");
    EXPECT_EQ(Encoded(text), "YQAAAGIA");
    EXPECT_EQ(Decoded("YQAAAGIA"), text);
}

TEST(PathName, TakesAnOddLastByteAsAUnitOfItsOwn)
{
    EXPECT_EQ(Decoded("QQ=="), QStringLiteral("A"));
    EXPECT_EQ(Decoded("/w=="), QString(QChar(0x00ff)));
    EXPECT_EQ(Decoded("QQBC"), QStringLiteral("AB"));
}

TEST(PathName, PassesOverCharactersOutsideTheAlphabet)
{
    EXPECT_EQ(Decoded(" QQ\nBC-_AA\r=="), QStringLiteral("AB"));
    EXPECT_EQ(Decoded(test::Bytes("Q\0QA")), QStringLiteral("A"));
    EXPECT_EQ(Decoded("!\xff*"), QString());
}

TEST(PathName, NeedsNoPadding)
{
    EXPECT_EQ(Decoded("xAA"), QString(QChar(0x00c4)));
    EXPECT_EQ(Decoded("x"), QString());
}

TEST(PathName, AnyUnitsComeBack)
{
    std::mt19937 random(1);
    for (int length = 0; length < 300; ++length) {
        QString text;
        for (int i = 0; i < length; ++i)
            text += QChar(static_cast<ushort>(random()));
        EXPECT_EQ(Encoded(text).size(), (2 * length + 2) / 3 * 4);
        EXPECT_EQ(Decoded(Encoded(text)), text);
    }
}
