#include "core/common/DecimalText_p.h"
#include "core/common/ShortNumberText_p.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include <QString>
#include <QTextStream>

#include <gtest/gtest.h>

namespace {

struct Parsed {
    bool isNumber;
    double value;
};

Parsed Parse(std::string_view text)
{
    Parsed parsed{false, 77};
    parsed.isNumber = kr::ParseDecimal(text.data(), text.data() + text.size(), parsed.value);
    return parsed;
}

std::uint64_t BitsOf(double value)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// Equal bits, but any NaN equals any other: its payload says nothing.
bool AreSame(double a, double b)
{
    return (std::isnan(a) && std::isnan(b)) || BitsOf(a) == BitsOf(b);
}

::testing::AssertionResult ReadsAsQtDoes(const std::string& text)
{
    bool qtAccepts = false;
    const double expected =
        QString::fromLatin1(text.data(), static_cast<int>(text.size())).toDouble(&qtAccepts);
    const Parsed parsed = Parse(text);
    if (AreSame(parsed.value, expected) && parsed.isNumber == qtAccepts)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << '"' << text << "\" reads as " << parsed.value << ' '
                                         << parsed.isNumber << ", expected " << expected << ' ' << qtAccepts;
}

// Followed by what the scans of short numbers may read beyond one.
std::string Padded(const std::string& text)
{
    return text + std::string(kr::kReadBehindShortNumber, '7');
}

std::string Formatted(float value)
{
    char buffer[kr::kFixed6Capacity];
    return {buffer, kr::FormatFixed6(buffer, value)};
}

std::string FormattedInteger(std::uint64_t value)
{
    char buffer[kr::kIntegerCapacity];
    return {buffer, kr::FormatInteger(buffer, value)};
}

// One stream for all comparisons: making one costs more than a thousand numbers.
class FixedStream {
public:
    FixedStream() : m_stream(&m_bytes)
    {
        m_stream.setRealNumberNotation(QTextStream::FixedNotation);
        m_stream.setRealNumberPrecision(6);
    }
    std::string Format(float value)
    {
        m_stream.seek(0);
        m_bytes.clear();
        m_stream << value;
        m_stream.flush();
        return m_bytes.toStdString();
    }

private:
    QByteArray m_bytes;
    QTextStream m_stream;
};

class RandomText {
public:
    explicit RandomText(unsigned seed) : m_engine(seed) {}

    std::size_t Below(std::size_t limit) { return m_engine() % limit; }
    bool Chance(unsigned percent) { return Below(100) < percent; }

    std::string Of(std::string_view alphabet, std::size_t length)
    {
        std::string text;
        while (text.size() < length)
            text += alphabet[Below(alphabet.size())];
        return text;
    }
    std::string Digits(std::size_t most) { return Of("0123456789", Below(most + 1)); }
    std::string Sign() { return Chance(50) ? std::string() : Of("+-", 1); }

    std::string Number(std::size_t mostDigits, std::size_t mostExponentDigits)
    {
        std::string text = Sign() + Digits(mostDigits);
        if (Chance(70))
            text += "." + Digits(mostDigits);
        if (Chance(50))
            text += Of("eE", 1) + Sign() + Digits(mostExponentDigits);
        return text;
    }

    std::string ShortestOf(double value) { return QString::number(value, 'g', 17).toStdString(); }
    double AnyDouble()
    {
        const std::uint64_t bits = m_engine();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    float AnyFloat()
    {
        const auto bits = static_cast<std::uint32_t>(m_engine());
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

private:
    std::mt19937_64 m_engine;
};

} // namespace

TEST(DecimalText, ReadsPlainNumbers)
{
    EXPECT_EQ(Parse("1").value, 1.0);
    EXPECT_EQ(Parse("-12.5").value, -12.5);
    EXPECT_EQ(Parse("+0.25").value, 0.25);
    EXPECT_EQ(Parse("70.004982").value, 70.004982);
    EXPECT_EQ(Parse(".5").value, 0.5);
    EXPECT_EQ(Parse("5.").value, 5.0);
    EXPECT_TRUE(Parse("5.").isNumber);
}

TEST(DecimalText, ReadsExponentsOfEitherLetterAndSign)
{
    EXPECT_EQ(Parse("1.5e+01").value, 15.0);
    EXPECT_EQ(Parse("1.5E1").value, 15.0);
    EXPECT_EQ(Parse("-2.5e-03").value, -0.0025);
    EXPECT_EQ(Parse("1.e2").value, 100.0);
    EXPECT_EQ(Parse("1e0000000005").value, 100000.0);
}

TEST(DecimalText, KeepsTheSignOfZero)
{
    EXPECT_TRUE(std::signbit(Parse("-0").value));
    EXPECT_TRUE(std::signbit(Parse("-0.000e9").value));
    EXPECT_FALSE(std::signbit(Parse("+0").value));
}

TEST(DecimalText, RoundsToNearestWithTiesToEven)
{
    EXPECT_EQ(Parse("9007199254740993").value, 9007199254740992.0);
    EXPECT_EQ(Parse("9007199254740995").value, 9007199254740996.0);
    EXPECT_EQ(Parse("9007199254740993.00000000000000000000001").value, 9007199254740994.0);
    EXPECT_EQ(Parse("2.4703282292062328e-324").value, std::numeric_limits<double>::denorm_min());
}

TEST(DecimalText, ReadsInfinityAndNanInAnyCase)
{
    const double infinity = std::numeric_limits<double>::infinity();
    for (const char* text : {"inf", "INF", "Inf", "+inf", "+iNf"})
        EXPECT_EQ(Parse(text).value, infinity) << text;
    EXPECT_EQ(Parse("-Inf").value, -infinity);
    for (const char* text : {"nan", "NaN", "NAN"})
        EXPECT_TRUE(std::isnan(Parse(text).value)) << text;
    EXPECT_TRUE(Parse("nan").isNumber);
}

TEST(DecimalText, GivesInfinityAboveAndZeroBelowTheRange)
{
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Parse("1e400").value, infinity);
    EXPECT_EQ(Parse("-1e400").value, -infinity);
    EXPECT_EQ(Parse("0.001e99999999999").value, infinity);
    EXPECT_EQ(BitsOf(Parse("-1e-400").value), BitsOf(0.0));
    EXPECT_EQ(BitsOf(Parse("1000e-99999999999").value), BitsOf(0.0));
    EXPECT_FALSE(Parse("1e400").isNumber);
    EXPECT_FALSE(Parse("1e-400").isNumber);
    EXPECT_TRUE(Parse("0e400").isNumber);
}

TEST(DecimalText, GivesZeroForTextThatIsNoNumber)
{
    for (const char* text :
         {"",         "-",        "+",      ".",     "-.",     "e5",   ".e5",  "1e",    "1e+",
          "--1",      "+-1",      "-+1",    "0x10",  "1,5",    "1 ",   " 1",   "1.2.3", "1e5.0",
          "1e5e5",    "1d5",      "1f",     "1_0",   "1-",     "+nan", "-nan", "in",    "inf1",
          "infinity", "INFINITY", "nan(1)", "-+inf", "vertex", "1e--5"}) {
        const Parsed parsed = Parse(text);
        EXPECT_FALSE(parsed.isNumber) << text;
        EXPECT_EQ(BitsOf(parsed.value), BitsOf(0.0)) << text;
    }
}

TEST(DecimalText, AcceptsAnyBytes)
{
    EXPECT_FALSE(Parse(std::string_view("1\0", 2)).isNumber);
    EXPECT_FALSE(Parse(std::string_view("\0001", 2)).isNumber);
    EXPECT_FALSE(Parse("\xb2").isNumber);
    EXPECT_FALSE(Parse("1\xe9").isNumber);
}

TEST(DecimalText, ReadsRandomNumbersAsQtDoes)
{
    RandomText random(1);
    for (int i = 0; i < 60'000; ++i) {
        ASSERT_TRUE(ReadsAsQtDoes(random.Number(9, 2)));
        ASSERT_TRUE(ReadsAsQtDoes(random.Number(25, 3)));
    }
}

TEST(DecimalText, ReadsRandomCharactersAsQtDoes)
{
    RandomText random(2);
    for (int i = 0; i < 60'000; ++i) {
        ASSERT_TRUE(ReadsAsQtDoes(random.Of("0123456789.+-eEinfaNx,_", 1 + random.Below(8))));
        ASSERT_TRUE(ReadsAsQtDoes(random.Of("019.-e", 1 + random.Below(12))));
    }
}

TEST(DecimalText, ReadsEveryKindOfDoubleAsQtDoes)
{
    RandomText random(3);
    for (int i = 0; i < 60'000; ++i)
        ASSERT_TRUE(ReadsAsQtDoes(random.ShortestOf(random.AnyDouble())));
}

TEST(DecimalText, ReadsLongDigitRunsAsQtDoes)
{
    RandomText random(4);
    for (int i = 0; i < 3'000; ++i)
        ASSERT_TRUE(ReadsAsQtDoes(random.Number(400, 4)));
}

TEST(DecimalText, ScansTheUsualNumberUpToWhatFollowsIt)
{
    const std::string_view text = "-12.5 7";
    double value = 0;
    EXPECT_EQ(kr::ScanUsualDecimal(text.data(), text.data() + text.size(), value), text.data() + 5);
    EXPECT_EQ(value, -12.5);
}

TEST(DecimalText, ScanLeavesUnusualTextAndTheValueAlone)
{
    for (const std::string_view text :
         {"", "-", ".", "nan", "1e", "1e400", "12345678901234567890", "1e-23"}) {
        double value = 3;
        EXPECT_EQ(kr::ScanUsualDecimal(text.data(), text.data() + text.size(), value), nullptr) << text;
        EXPECT_EQ(value, 3) << text;
    }
}

TEST(DecimalText, ScansShortDecimalsOfEveryLengthUpToWhatFollows)
{
    const std::string digits = "9876543";
    for (std::size_t whole = 0; whole <= digits.size(); ++whole) {
        for (std::size_t fraction = whole == 0; fraction <= digits.size(); ++fraction) {
            for (const char* const sign : {"", "-", "+"}) {
                const std::string number = sign + digits.substr(0, whole) + '.' + digits.substr(0, fraction);
                const std::string text = Padded(number + ' ');
                double value = 77;
                EXPECT_EQ(kr::ScanShortDecimal(text.data(), value), text.data() + number.size()) << number;
                EXPECT_TRUE(AreSame(value, Parse(number).value)) << number;
            }
        }
    }
}

TEST(DecimalText, ScansShortIntegersOfOneToNineDigits)
{
    const std::string digits = "123456789";
    for (std::size_t count = 1; count <= digits.size(); ++count) {
        const std::string text = Padded(digits.substr(0, count) + '/');
        int value = 77;
        EXPECT_EQ(kr::ScanShortInteger(text.data(), value), text.data() + count);
        EXPECT_EQ(value, std::stoi(digits.substr(0, count)));
    }
}

TEST(DecimalText, ShortScansRefuseWhatIsLongerOrNoNumber)
{
    for (const char* const number : {"", " 1", "-", "+", ".", "-.", "--1", "e5", "nan", ":1", "12345678",
                                     "0.12345678", "1;", "1.2:", "\x81", "1\xB2"}) {
        const std::string text = Padded(std::string(number) + '\n');
        double value = 77;
        EXPECT_EQ(kr::ScanShortDecimal(text.data(), value), nullptr) << number;
        EXPECT_EQ(value, 77);
    }
    for (const char* const number : {"", " 1", "-1", "+1", ":", "1234567890", "12:", "x"}) {
        const std::string text = Padded(std::string(number) + '\n');
        int value = 77;
        EXPECT_EQ(kr::ScanShortInteger(text.data(), value), nullptr) << number;
        EXPECT_EQ(value, 77);
    }
}

TEST(DecimalText, ShortScansReadNothingButWholeNumbersOutOfRandomCharacters)
{
    constexpr std::string_view kCharacters = "0123456789012345678901234567890123456789..--+/e \n:?Pp\x10\xB1";
    std::mt19937 random(7);
    std::uniform_int_distribution<std::size_t> pick(0, kCharacters.size() - 1);
    int decimals = 0;
    int integers = 0;
    for (int i = 0; i < 200'000; ++i) {
        std::string text(kr::kReadBehindShortNumber + 2, ' ');
        for (char& character : text)
            character = kCharacters[pick(random)];
        double decimal = 0;
        if (const char* const end = kr::ScanShortDecimal(text.data(), decimal)) {
            const Parsed expected = Parse({text.data(), static_cast<std::size_t>(end - text.data())});
            ASSERT_TRUE(expected.isNumber && AreSame(decimal, expected.value) && !kr::IsDecimalDigit(*end))
                << text;
            ++decimals;
        }
        int integer = 0;
        if (const char* const end = kr::ScanShortInteger(text.data(), integer)) {
            const std::string number(text.data(), static_cast<std::size_t>(end - text.data()));
            ASSERT_TRUE(std::to_string(integer) ==
                            number.substr(std::min(number.find_first_not_of('0'), number.size() - 1)) &&
                        !kr::IsDecimalDigit(*end))
                << text;
            ++integers;
        }
    }
    EXPECT_GT(decimals, 10'000);
    EXPECT_GT(integers, 10'000);
}

TEST(DecimalText, WritesSixDecimals)
{
    EXPECT_EQ(Formatted(1.5f), "1.500000");
    EXPECT_EQ(Formatted(-70.004982f), "-70.004982");
    EXPECT_EQ(Formatted(0.0f), "0.000000");
    EXPECT_EQ(Formatted(0.9999996f), "1.000000");
    EXPECT_EQ(Formatted(16777215.0f), "16777215.000000");
    EXPECT_EQ(Formatted(16777216.0f), "16777216.000000");
}

TEST(DecimalText, WritesSixDecimalsOnBothSidesOfAWholeNumber)
{
    EXPECT_EQ(Formatted(0.99999994f), "1.000000");
    EXPECT_EQ(Formatted(7.9999995f), "8.000000");
    EXPECT_EQ(Formatted(std::nextafter(10.0f, 0.0f)), "9.999999");
    EXPECT_EQ(Formatted(10.0f), "10.000000");
    EXPECT_EQ(Formatted(std::nextafter(100.0f, 0.0f)), "99.999992");
    EXPECT_EQ(Formatted(100.0f), "100.000000");
    EXPECT_EQ(Formatted(999.99994f), "999.999939");
    EXPECT_EQ(Formatted(1000.0f), "1000.000000");
    EXPECT_EQ(Formatted(-999999.94f), "-999999.937500");
    EXPECT_EQ(Formatted(1000000.0f), "1000000.000000");
}

TEST(DecimalText, WritesEveryDigitInEveryPlace)
{
    // Each whole number below 1000 with each thousandth, as texts of their own would be joined.
    for (int whole = 0; whole < 1000; ++whole) {
        const std::string text = Formatted(static_cast<float>(whole) + 0.5f);
        ASSERT_EQ(text, std::to_string(whole) + ".500000");
    }
    for (int millionth = 0; millionth < 1'000'000; millionth += 7) {
        const std::string digits = std::to_string(1'000'000 + millionth).substr(1);
        ASSERT_EQ(Formatted(static_cast<float>(millionth * 1e-6)), "0." + digits);
    }
}

TEST(DecimalText, WritesTiesAwayFromZero)
{
    EXPECT_EQ(Formatted(0.0078125f), "0.007813");
    EXPECT_EQ(Formatted(-0.0078125f), "-0.007813");
    EXPECT_EQ(Formatted(0.0234375f), "0.023438");
}

TEST(DecimalText, WritesNoSignForNegativeZeroButForWhatRoundsToIt)
{
    EXPECT_EQ(Formatted(-0.0f), "0.000000");
    EXPECT_EQ(Formatted(-1e-9f), "-0.000000");
}

TEST(DecimalText, WritesAllDigitsOfLargeNumbers)
{
    EXPECT_EQ(Formatted(3.4e38f), "339999995214436424907732413799364296704.000000");
    EXPECT_EQ(Formatted(std::numeric_limits<float>::lowest()),
              "-340282346638528859811704183484516925440.000000");
}

TEST(DecimalText, WritesNamesForWhatIsNotFinite)
{
    EXPECT_EQ(Formatted(std::numeric_limits<float>::quiet_NaN()), "nan");
    EXPECT_EQ(Formatted(-std::numeric_limits<float>::quiet_NaN()), "nan");
    EXPECT_EQ(Formatted(std::numeric_limits<float>::infinity()), "inf");
    EXPECT_EQ(Formatted(-std::numeric_limits<float>::infinity()), "-inf");
}

TEST(DecimalText, WritesRandomFloatsAsTheTextStreamDoes)
{
    RandomText random(5);
    FixedStream stream;
    for (int i = 0; i < 300'000; ++i) {
        const float value = random.AnyFloat();
        ASSERT_EQ(Formatted(value), stream.Format(value)) << value;
    }
}

TEST(DecimalText, WritesTiesAndTheirNeighboursAsTheTextStreamDoes)
{
    FixedStream stream;
    // A 128th is the smallest power of two that ends in a tie at six decimals.
    for (int i = 1; i < 60'000; i += 2) {
        const float tie = static_cast<float>(i) / 128;
        for (const float value : {tie, std::nextafter(tie, 0.0f), std::nextafter(tie, 1e9f)})
            ASSERT_EQ(Formatted(value), stream.Format(value)) << value;
    }
}

TEST(DecimalText, WritesIntegersOfEveryLength)
{
    EXPECT_EQ(FormattedInteger(0), "0");
    std::uint64_t power = 1;
    for (int length = 1; length <= 20; ++length, power *= 10) {
        for (const std::uint64_t value : {power - 1, power, power + 1, power * 7 / 4})
            ASSERT_EQ(FormattedInteger(value), std::to_string(value));
    }
    EXPECT_EQ(FormattedInteger(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
}

TEST(DecimalText, WritesSmallAndRandomIntegers)
{
    for (std::uint64_t value = 0; value < 1'100'000; value += 3)
        ASSERT_EQ(FormattedInteger(value), std::to_string(value));
    std::mt19937_64 random(6);
    for (int i = 0; i < 100'000; ++i) {
        const std::uint64_t value = random() >> (i % 64);
        ASSERT_EQ(FormattedInteger(value), std::to_string(value));
    }
}
