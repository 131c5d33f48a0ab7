#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

#include "core/common/DecimalText_p.h"

namespace kr::package3mf {

/// Room for the longest text that FormatGeneral6 writes, and what it stores behind it.
constexpr int kGeneral6Capacity = 32;

namespace detail {

// From here on numbers are written with an exponent, and below the other one too.
constexpr float kFirstWithExponent = 999999.5f;
constexpr double kFirstWithoutExponent = 1e-4;

// The power of ten at or below the power of two with this exponent of a float, from 2^-14 to 2^19.
constexpr int kLowestExponent = 127 - 14;
constexpr int kPowersAtOrBelow[] = {-5, -4, -4, -4, -4, -3, -3, -3, -2, -2, -2, -1, -1, -1, 0, 0, 0,
                                    0,  1,  1,  1,  2,  2,  2,  3,  3,  3,  3,  4,  4,  4,  5, 5, 5};
// 10^-4 to 10^6
constexpr double kPowersOfTen[] = {1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};

constexpr char kLeadingZeros[] = {'0', '.', '0', '0', '0'};

inline int PowerOfTenAtOrBelow(float magnitude)
{
    std::uint32_t bits;
    std::memcpy(&bits, &magnitude, sizeof bits);
    const int power = kPowersAtOrBelow[static_cast<int>(bits >> 23) - kLowestExponent];
    return power + (static_cast<double>(magnitude) >= kPowersOfTen[power + 1 + 4] ? 1 : 0);
}

// The number of characters in front of the zeros at the end of six digits.
inline int CountSignificant(const char* digits)
{
    std::uint64_t characters = 0;
    std::memcpy(&characters, digits, 6);
    return 8 - __builtin_clzll(characters ^ 0x303030303030) / 8;
}

// What FormatGeneral6 writes for zero, very small and very large values, infinities and no numbers.
char* FormatGeneral6Unusual(char* out, float value);

} // namespace detail

/// Writes @p value with six significant digits, as QString("%1").arg(value, 0, 'g', -1) does: rounded to the
/// nearest, ties away from zero; without zeros at the end; with an exponent below 0.0001 and from 1000000 on;
/// "0" for zero of either sign; "nan", "inf", "-inf". No terminating zero is written.
/// @param out  at least kGeneral6Capacity characters
/// @return the position behind the last character
inline char* FormatGeneral6(char* out, float value)
{
    const float magnitude = std::fabs(value);
    const bool isUsual = magnitude >= detail::kFirstWithoutExponent && magnitude < detail::kFirstWithExponent;
    if (!isUsual)
        return detail::FormatGeneral6Unusual(out, value);
    // Coordinates change their signs too often to be guessed: the sign is written in any case.
    *out = '-';
    out += value < 0;

    // 24 bits of the float by at most 21 bits of 5^9: the product is exact, and so is adding a half to it.
    int power = detail::PowerOfTenAtOrBelow(magnitude);
    const double roundedUp = static_cast<double>(magnitude) * kr::detail::kExactPowersOfTen[5 - power] + 0.5;
    auto number = static_cast<std::uint32_t>(static_cast<std::int64_t>(roundedUp));
    if (number == 1'000'000) {
        number = 100'000;
        ++power;
    }
    char digits[16] = {};
    kr::detail::AppendTriple(kr::detail::AppendTriple(digits, number / 1000), number % 1000);
    const int significant = detail::CountSignificant(digits);
    if (power < 0) {
        std::memcpy(out, detail::kLeadingZeros, sizeof detail::kLeadingZeros);
        std::memcpy(out + 1 - power, digits, 8);
        return out + 1 - power + significant;
    }
    const int whole = power + 1;
    std::memcpy(out, digits, 8);
    out[whole] = '.';
    std::memcpy(out + whole + 1, digits + whole, 8);
    return out + (significant > whole ? significant + 1 : whole);
}

} // namespace kr::package3mf
