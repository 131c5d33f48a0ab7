#include "core/utility/Utility.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "tests/common/GermanLocale.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::uint64_t Bits(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

void ExpectAsQt(const std::string& text)
{
    const QString qtText = QString::fromUtf8(text.c_str());
    const double expected = qtText.toDouble();
    const double fromBuffer = Utility::ConvertBufferToDouble(text.c_str());
    const double fromString = Utility::ConvertStringToDoubleValue(qtText);
    if (std::isnan(expected)) {
        EXPECT_TRUE(std::isnan(fromBuffer) && std::isnan(fromString)) << text;
        return;
    }
    EXPECT_EQ(Bits(fromBuffer), Bits(expected)) << '"' << text << '"';
    EXPECT_EQ(Bits(fromString), Bits(expected)) << '"' << text << '"';
}

class RandomText {
public:
    explicit RandomText(unsigned seed) : m_random(seed) {}

    std::string FromAlphabet(const std::string& alphabet, std::size_t longest)
    {
        std::string text(Below(longest + 1), ' ');
        for (char& character : text)
            character = alphabet[Below(alphabet.size())];
        return text;
    }
    std::string Digits(std::size_t longest) { return FromAlphabet("0123456789", longest); }
    std::string Number()
    {
        static const char* const kSigns[] = {"", "", "", "-", "+"};
        std::string text = kSigns[Below(5)] + Digits(24);
        if (Below(3) != 0)
            text += '.' + Digits(24);
        if (Below(2) != 0)
            text += std::string(Below(2) != 0 ? "e" : "E") + kSigns[Below(5)] + Digits(4);
        return text;
    }
    std::string ShortestOfAnyDouble()
    {
        const std::uint64_t bits = m_random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return QString::number(value, 'g', 17).toStdString();
    }
    std::size_t Below(std::size_t limit) { return static_cast<std::size_t>(m_random() % limit); }

private:
    std::mt19937_64 m_random;
};

} // namespace

TEST(UtilityNumber, ReadsSignDigitsPointAndExponent)
{
    EXPECT_EQ(Utility::ConvertBufferToDouble("-12.5e-1"), -1.25);
    EXPECT_EQ(Utility::ConvertBufferToDouble("+3"), 3.0);
    EXPECT_EQ(Utility::ConvertBufferToDouble("1."), 1.0);
    EXPECT_EQ(Utility::ConvertBufferToDouble(".5"), 0.5);
    EXPECT_EQ(Utility::ConvertBufferToDouble("1E3"), 1000.0);
    EXPECT_EQ(Utility::ConvertStringToDoubleValue(QStringLiteral("-12.5e-1")), -1.25);
}

TEST(UtilityNumber, ReadsNullAndEmptyAsZero)
{
    EXPECT_EQ(Bits(Utility::ConvertBufferToDouble(nullptr)), Bits(0.0));
    EXPECT_EQ(Bits(Utility::ConvertBufferToDouble("")), Bits(0.0));
    EXPECT_EQ(Bits(Utility::ConvertBufferToDouble(" \t ")), Bits(0.0));
    EXPECT_EQ(Bits(Utility::ConvertStringToDoubleValue(QString())), Bits(0.0));
}

TEST(UtilityNumber, ReadsTextThatIsNoNumberAsZero)
{
    for (const char* text : {"abc", "1x", "0x10", "1,5", "1 2", "--1", "-", ".", "e5", "1e", "1e+", "+-1",
                             "1_000", "5\\", "infinite"})
        EXPECT_EQ(Utility::ConvertBufferToDouble(text), 0.0) << text;
}

TEST(UtilityNumber, PassesOverBlanksAroundTheNumber)
{
    EXPECT_EQ(Utility::ConvertBufferToDouble(" \t\r\n\v\f1.5 \t\r\n\v\f"), 1.5);
    EXPECT_EQ(Utility::ConvertBufferToDouble("\xC2\xA0"
                                             "1.5"),
              1.5);
}

TEST(UtilityNumber, KeepsTheSignOfZero)
{
    EXPECT_EQ(Bits(Utility::ConvertBufferToDouble("-0")), Bits(-0.0));
    EXPECT_EQ(Bits(Utility::ConvertBufferToDouble("-0.0e5")), Bits(-0.0));
}

TEST(UtilityNumber, ReadsInfinityNanAndNumbersOutOfRange)
{
    EXPECT_EQ(Utility::ConvertBufferToDouble("inf"), kInfinity);
    EXPECT_EQ(Utility::ConvertBufferToDouble("-inf"), -kInfinity);
    EXPECT_TRUE(std::isnan(Utility::ConvertBufferToDouble("nan")));
    EXPECT_EQ(Utility::ConvertBufferToDouble("1e400"), kInfinity);
    EXPECT_EQ(Utility::ConvertBufferToDouble("-1e400"), -kInfinity);
    EXPECT_EQ(Utility::ConvertBufferToDouble("1e-400"), 0.0);
}

TEST(UtilityNumber, ReadsHalfwayCasesToTheNearestDouble)
{
    EXPECT_EQ(Utility::ConvertBufferToDouble("9007199254740993"), 9007199254740992.0);
    EXPECT_EQ(Utility::ConvertBufferToDouble("9007199254740993.0000000000000000000001"), 9007199254740994.0);
    EXPECT_EQ(Utility::ConvertBufferToDouble("4.9e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(Utility::ConvertBufferToDouble("1.7976931348623157e308"), std::numeric_limits<double>::max());
}

TEST(UtilityNumber, ReadsWellFormedNumbersAsQtDoes)
{
    RandomText random(1);
    for (int i = 0; i < 150000; ++i)
        ExpectAsQt(random.Number());
}

TEST(UtilityNumber, ReadsArbitraryTextAsQtDoes)
{
    RandomText random(2);
    for (int i = 0; i < 150000; ++i)
        ExpectAsQt(random.FromAlphabet("0123459..eE+-  \t\vxinfaINFAN,_'", 9));
}

TEST(UtilityNumber, ReadsBytesBeyondAsciiAsQtDoes)
{
    // No-break space, Arabic digits and separator, the minus sign, half of a character, a byte-order mark.
    static const char* const kPieces[] = {
        "\xC2\xA0", "\xD9\xA1", "\xD9\xAB", "\xE2\x88\x92", "\xC3", "\xEF\xBB\xBF", "\xE2\x80\x89", "1", "2",
        ".",        "-",        "e"};
    RandomText random(3);
    for (int i = 0; i < 50000; ++i) {
        std::string text;
        for (std::size_t n = random.Below(6); n > 0; --n)
            text += kPieces[random.Below(std::size(kPieces))];
        ExpectAsQt(text);
    }
}

TEST(UtilityNumber, ReadsBackEveryDoubleFromItsText)
{
    RandomText random(4);
    for (int i = 0; i < 100000; ++i)
        ExpectAsQt(random.ShortestOfAnyDouble());
}

TEST(UtilityNumber, ReadsEveryShortByteStringAsQtDoes)
{
    for (int first = 1; first < 256; ++first) {
        ExpectAsQt(std::string(1, static_cast<char>(first)));
        ExpectAsQt(static_cast<char>(first) + std::string("7"));
        ExpectAsQt(std::string("7") + static_cast<char>(first));
        ExpectAsQt(std::string("7") + static_cast<char>(first) + "7");
    }
}

TEST(UtilityNumber, ReadsAPointUnderAnyCLocale)
{
    const test::GermanLocale locale;
    EXPECT_EQ(Utility::ConvertBufferToDouble("1.5"), 1.5);
    EXPECT_EQ(Utility::ConvertBufferToDouble("1,5"), 0.0);
    EXPECT_EQ(Utility::ConvertStringToDoubleValue(QStringLiteral("1.5")), 1.5);
}

TEST(UtilityNumber, ReadsIntegers)
{
    EXPECT_EQ(Utility::ConvertStringToIntValue(QStringLiteral("42")), 42);
    EXPECT_EQ(Utility::ConvertStringToIntValue(QStringLiteral("-7")), -7);
    EXPECT_EQ(Utility::ConvertStringToIntValue(QStringLiteral("+7")), 7);
    EXPECT_EQ(Utility::ConvertStringToIntValue(QStringLiteral(" 007\r\n")), 7);
    EXPECT_EQ(Utility::ConvertStringToIntValue(QStringLiteral("2147483647")), 2147483647);
    EXPECT_EQ(Utility::ConvertStringToIntValue(QStringLiteral("-2147483648")), -2147483647 - 1);
}

TEST(UtilityNumber, ReadsTextThatIsNoIntegerAsZero)
{
    for (const char* text : {"", " ", "abc", "3.7", "3.0", "1e2", "0x10", "1,000", "1 2", "2147483648",
                             "-2147483649", "99999999999999999999", "--1", "inf"})
        EXPECT_EQ(Utility::ConvertStringToIntValue(QString::fromLatin1(text)), 0) << text;
}
