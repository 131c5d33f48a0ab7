#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kr {

/// Reads the decimal number that is the whole text [begin, end): sign, digits with at most one point among or
/// around them, and an exponent of e or E, sign and digits; or inf, +inf, -inf and nan in any case. The value
/// is the one that QString::toDouble gives for the same text without surrounding blanks, bit for bit and in
/// every locale.
/// @param value  the nearest double, ties to even; 0 for a text that is no number and for one below the range
///               of a double, an infinity for one above it
/// @return true for a number in range. Never throws, and accepts any bytes
bool ParseDecimal(const char* begin, const char* end, double& value);

inline bool IsDecimalDigit(char character)
{
    return static_cast<unsigned char>(character - '0') < 10;
}

namespace detail {

// The powers of ten that a double holds exactly.
constexpr double kExactPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kLargestExactPower = 22;
// Up to here every integer is a double.
constexpr std::uint64_t kLargestExactInteger = std::uint64_t(1) << 53;
// As many digits of any kind fit into 64 bits.
constexpr int kDigitsOf64Bits = 19;

inline const char* ScanDigits(const char* position, const char* end, std::uint64_t& digits)
{
    for (; position != end && IsDecimalDigit(*position); ++position)
        digits = digits * 10 + static_cast<unsigned char>(*position - '0');
    return position;
}

// An exponent of one to three digits behind its letter; anything else is left to the complete parser.
inline const char* ScanExponent(const char* position, const char* end, int& exponent)
{
    if (position == end)
        return nullptr;
    const bool isNegative = *position == '-';
    if (isNegative || *position == '+')
        ++position;
    std::uint64_t digits = 0;
    const char* const behind = ScanDigits(position, end, digits);
    if (behind == position || behind - position > 3)
        return nullptr;
    exponent += isNegative ? -static_cast<int>(digits) : static_cast<int>(digits);
    return behind;
}

} // namespace detail

/// Reads a number at the beginning of [begin, end) when it is one of the usual kind: its digits make an
/// integer that a double holds, and so does the power of ten that scales it. One multiplication or division
/// of two exact doubles then rounds as the complete conversion would.
/// @return the position behind the longest number there; null for all other texts, with @p value as it was
inline const char* ScanUsualDecimal(const char* begin, const char* end, double& value)
{
    const char* position = begin;
    const bool isNegative = position != end && *position == '-';
    if (isNegative || (position != end && *position == '+'))
        ++position;
    std::uint64_t digits = 0;
    const char* const first = position;
    position = detail::ScanDigits(position, end, digits);
    std::ptrdiff_t digitCount = position - first;
    int exponent = 0;
    if (position != end && *position == '.') {
        const char* const fraction = position + 1;
        position = detail::ScanDigits(fraction, end, digits);
        digitCount += position - fraction;
        exponent = -static_cast<int>(position - fraction);
    }
    if (digitCount == 0 || digitCount > detail::kDigitsOf64Bits)
        return nullptr;
    if (position != end && (*position == 'e' || *position == 'E')) {
        position = detail::ScanExponent(position + 1, end, exponent);
        if (!position)
            return nullptr;
    }
    if (digits > detail::kLargestExactInteger || exponent < -detail::kLargestExactPower ||
        exponent > detail::kLargestExactPower)
        return nullptr;
    const double magnitude = exponent < 0 ? static_cast<double>(digits) / detail::kExactPowersOfTen[-exponent]
                                          : static_cast<double>(digits) * detail::kExactPowersOfTen[exponent];
    value = isNegative ? -magnitude : magnitude;
    return position;
}

/// Room for the longest text that FormatFixed6 writes.
constexpr int kFixed6Capacity = 48;
/// Room for the longest text that FormatInteger writes, 20 digits, and what it stores behind them.
constexpr int kIntegerCapacity = 24;

namespace detail {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the lowest byte of a word is its first character");

// "000" to "999", each with the number of its leading zeros behind, which is 2 for zero itself. Its 4 KB stay
// in the cache, and three digits cost one division. Splitting eight digits by multiplications in one word
// took 8.4 ns a coordinate, this takes 2.7.
struct DigitTriples {
    std::uint32_t words[1000] = {};

    constexpr DigitTriples()
    {
        for (std::uint32_t i = 0; i < 1000; ++i) {
            const std::uint32_t zeros = i < 10 ? 2 : i < 100 ? 1 : 0;
            words[i] = ('0' + i / 100) | ('0' + i / 10 % 10) << 8 | ('0' + i % 10) << 16 | zeros << 24;
        }
    }
};
inline constexpr DigitTriples kDigitTriples;

// Both store a byte more than they write.
inline char* AppendTriple(char* out, std::uint32_t triple)
{
    std::memcpy(out, &kDigitTriples.words[triple], 4);
    return out + 3;
}
inline char* AppendWithoutZeros(char* out, std::uint32_t triple)
{
    const std::uint32_t word = kDigitTriples.words[triple];
    const std::uint32_t zeros = word >> 24;
    const std::uint32_t digits = word >> 8 * zeros;
    std::memcpy(out, &digits, 4);
    return out + 3 - zeros;
}

// From here on a float has no fraction; below, a millionth part of it still is an integer of 64 bits.
constexpr float kFirstWhole = 16777216.0f;

// What FormatFixed6 writes for the magnitude of a value that is whole for its size, infinite or no number.
char* FormatWhole(char* out, float magnitude);
char* FormatLongInteger(char* out, std::uint64_t value);

} // namespace detail

/// Writes @p value in decimal, without a terminating zero.
/// @param out  at least kIntegerCapacity characters
/// @return the position behind the last character
inline char* FormatInteger(char* out, std::uint64_t value)
{
    if (value >= 1'000'000)
        return detail::FormatLongInteger(out, value);
    const auto small = static_cast<std::uint32_t>(value);
    if (small < 1000)
        return detail::AppendWithoutZeros(out, small);
    return detail::AppendTriple(detail::AppendWithoutZeros(out, small / 1000), small % 1000);
}

/// Writes @p value with six digits after the point, as a QTextStream in fixed notation with precision 6 does:
/// rounded to the nearest, ties away from zero; "-0.000000" for a negative value that rounds to zero, but
/// "0.000000" for zero of either sign; "nan", "inf", "-inf". No terminating zero is written.
/// @param out  at least kFixed6Capacity characters
/// @return the position behind the last character
inline char* FormatFixed6(char* out, float value)
{
    // Coordinates change their signs too often to be guessed: the sign is written in any case, and kept or
    // not.
    *out = '-';
    out += value < 0;
    const float magnitude = std::fabs(value);
    if (!(magnitude < detail::kFirstWhole))
        return detail::FormatWhole(out, magnitude);

    // 24 bits of the float by the 14 bits of 5^6: the product is exact, and so is adding a half to it.
    const double roundedUp = static_cast<double>(magnitude) * 1e6 + 0.5;
    const auto millionths = static_cast<std::uint64_t>(static_cast<std::int64_t>(roundedUp));
    std::uint32_t fraction = 0;
    if (millionths < 1'000'000'000) {
        // Most coordinates lie below 1000, where 32 bits and one look-up do.
        const auto narrow = static_cast<std::uint32_t>(millionths);
        out = detail::AppendWithoutZeros(out, narrow / 1'000'000);
        fraction = narrow % 1'000'000;
    } else {
        out = FormatInteger(out, millionths / 1'000'000);
        fraction = static_cast<std::uint32_t>(millionths % 1'000'000);
    }
    *out++ = '.';
    return detail::AppendTriple(detail::AppendTriple(out, fraction / 1000), fraction % 1000);
}

} // namespace kr
