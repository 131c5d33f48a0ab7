#pragma once

#include <cstddef>
#include <cstdint>

namespace kr {

/// Reads the decimal number that is the whole text [begin, end): sign, digits with at most one point among or
/// around them, and an exponent of e or E, sign and digits; or inf, +inf, -inf and nan in any case. The value
/// is the one that QString::toDouble gives for the same text without surrounding blanks, bit for bit and in
/// every locale.
/// @param value  the nearest double, ties to even; 0 for a text that is no number and for one below the range
///               of a double, an infinity for one above it
/// @return true for a number in range. Never throws, and accepts any bytes
bool ParseDecimal(const char* begin, const char* end, double& value);

/// Room for the longest text that FormatFixed6 writes.
constexpr int kFixed6Capacity = 48;

/// Writes @p value with six digits after the point, as a QTextStream in fixed notation with precision 6 does:
/// rounded to the nearest, ties away from zero; "-0.000000" for a negative value that rounds to zero, but
/// "0.000000" for zero of either sign; "nan", "inf", "-inf". No terminating zero is written.
/// @param out  at least kFixed6Capacity characters
/// @return the position behind the last character
char* FormatFixed6(char* out, float value);

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

} // namespace kr
