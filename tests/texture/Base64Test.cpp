#include "fileformat/texture/Base64_p.h"

#include <cctype>
#include <random>

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

namespace {

QByteArray ByQt(const QString& text)
{
    return QByteArray::fromBase64(text.toLatin1());
}

/// Mostly digits, with characters of every sort between them.
QString RandomText(std::mt19937& random, int length, unsigned percentDigits)
{
    const QString digits = QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
    QString text;
    for (int i = 0; i < length; ++i) {
        const bool isDigit = random() % 100 < percentDigits;
        text += isDigit ? digits[static_cast<int>(random() % 64)]
                        : QChar(static_cast<ushort>(random() % 3 ? random() % 300 : random()));
    }
    return text;
}

} // namespace

TEST(Base64, EveryCharacterCountsAsQtSays)
{
    for (unsigned unit = 0; unit <= 0xffff; ++unit) {
        for (int place = 0; place < 4; ++place) {
            QString text = QStringLiteral("ABCDEFGH");
            text[place] = QChar(static_cast<ushort>(unit));
            ASSERT_EQ(kr::texture::BytesOfBase64(text), ByQt(text)) << unit;
        }
    }
}

TEST(Base64, TextsOfEveryLengthDecodeAsQtSays)
{
    std::mt19937 random(1);
    for (int length = 0; length < 200; ++length) {
        for (const unsigned percentDigits : {100u, 95u, 50u, 0u}) {
            const QString text = RandomText(random, length, percentDigits);
            EXPECT_EQ(kr::texture::BytesOfBase64(text), ByQt(text));
        }
    }
}

TEST(Base64, LongTextsDecodeAsQtSays)
{
    std::mt19937 random(2);
    for (const unsigned percentDigits : {100u, 99u, 90u}) {
        const QString text = RandomText(random, 200'000, percentDigits);
        EXPECT_TRUE(kr::texture::BytesOfBase64(text) == ByQt(text));
    }
}

TEST(Base64, PureTextDecodesAsQtSays)
{
    std::mt19937 random(3);
    for (int length = 0; length < 200; ++length) {
        for (const char* padding : {"", "=", "==", "==="}) {
            const QByteArray text = RandomText(random, length, 100).toLatin1() + padding;
            EXPECT_EQ(kr::texture::BytesOfPureBase64(text), QByteArray::fromBase64(text));
        }
    }
}

TEST(Base64, TextWithAnythingElseIsNotPure)
{
    for (int length = 1; length < 12; ++length) {
        for (int place = 0; place < length; ++place) {
            for (int character = 0; character < 256; ++character) {
                QByteArray text(length, 'A');
                text[place] = static_cast<char>(character);
                const bool isDigit =
                    character < 128 && (std::isalnum(character) || character == '+' || character == '/');
                const bool isPadding = character == '=' && place == length - 1;
                EXPECT_EQ(kr::texture::BytesOfPureBase64(text).has_value(), isDigit || isPadding)
                    << character;
            }
        }
    }
}
