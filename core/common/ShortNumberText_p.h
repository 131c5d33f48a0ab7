#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/common/DecimalText_p.h"

namespace kr {

// The functions below look at the digits of a whole word of the machine at a time: eight characters, the
// first one in the lowest byte. kReadBehindShortNumber of them behind a number must be readable, whatever
// they are.
constexpr int kDigitsOfWord = 8;
constexpr std::size_t kReadBehindShortNumber = 16;

namespace detail {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the first character must be in the lowest byte");

constexpr std::uint64_t Repeated(unsigned char byte)
{
    return std::uint64_t(0x0101010101010101) * byte;
}
static_assert(Repeated(0xFF) == ~std::uint64_t(0), "the factor must not have a sign");

inline std::uint64_t LoadCharacters(const char* position)
{
    std::uint64_t characters;
    std::memcpy(&characters, position, sizeof characters);
    return characters;
}

// The number of characters in front of the first blank, slash, point, sign or control character: 0 to 8.
// Digits have a bit that these have not. The next number's place hangs on this, so it must not take long;
// what else has that bit, HoldsDigits() tells while reading goes on.
inline int CountNumberCharacters(std::uint64_t characters)
{
    const std::uint64_t isEnd = ~characters & Repeated(0x10);
    return isEnd == 0 ? kDigitsOfWord : __builtin_ctzll(isEnd) / 8;
}

// The first @p count characters, 1 to 8, as digits behind leading zeros; what is no digit is above 9.
inline std::uint64_t DigitsOf(std::uint64_t characters, int count)
{
    return (characters ^ Repeated('0')) << 8 * (kDigitsOfWord - count);
}

inline bool HoldsDigits(std::uint64_t digits)
{
    // Adding lifts what is above 9 to 128 and more. It may carry into the next byte, but not before such a
    // one.
    return (((digits + Repeated(128 - 10)) | digits) & Repeated(0x80)) == 0;
}

// The number that eight digits make: pairs, then fours, then all.
inline std::uint32_t JoinDigits(std::uint64_t digits)
{
    const std::uint64_t pairs = digits * 10 + (digits >> 8);
    const std::uint64_t outer = (pairs & 0x000000FF000000FF) * (100 + (std::uint64_t(1'000'000) << 32));
    const std::uint64_t inner = (pairs >> 16 & 0x000000FF000000FF) * (1 + (std::uint64_t(10'000) << 32));
    return static_cast<std::uint32_t>((outer + inner) >> 32);
}

constexpr std::uint64_t kPowersOfTen[] = {1, 10, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000};

} // namespace detail

/// Reads a positive integer of one to nine digits at @p position.
/// @return the position behind it; null for anything else, with @p value as it was
inline const char* ScanShortInteger(const char* position, int& value)
{
    const std::uint64_t characters = detail::LoadCharacters(position);
    const int count = detail::CountNumberCharacters(characters);
    if (count == 0)
        return nullptr;
    const std::uint64_t digits = detail::DigitsOf(characters, count);
    position += count;
    const bool goesOn = count == kDigitsOfWord && IsDecimalDigit(*position);
    if (!detail::HoldsDigits(digits) || (goesOn && IsDecimalDigit(position[1])))
        return nullptr;
    value = static_cast<int>(detail::JoinDigits(digits));
    if (goesOn)
        value = value * 10 + (*position++ - '0');
    return position;
}

/// Reads a number at @p position as ScanUsualDecimal() does, if it has no exponent, at most seven digits in
/// front of the point and at most seven behind it.
/// @return the position behind it; null for anything else, with @p value as it was
inline const char* ScanShortDecimal(const char* position, double& value)
{
    const bool isNegative = *position == '-';
    if (isNegative || *position == '+')
        ++position;
    std::uint64_t characters = detail::LoadCharacters(position);
    const int wholeCount = detail::CountNumberCharacters(characters);
    position += wholeCount;
    std::uint64_t number = 0;
    if (wholeCount > 0) {
        const std::uint64_t digits = detail::DigitsOf(characters, wholeCount);
        if (wholeCount == kDigitsOfWord || !detail::HoldsDigits(digits))
            return nullptr;
        number = detail::JoinDigits(digits);
    }
    int fractionCount = 0;
    if (*position == '.') {
        characters = detail::LoadCharacters(++position);
        fractionCount = detail::CountNumberCharacters(characters);
        position += fractionCount;
    }
    if (fractionCount > 0) {
        const std::uint64_t digits = detail::DigitsOf(characters, fractionCount);
        if (fractionCount == kDigitsOfWord || !detail::HoldsDigits(digits))
            return nullptr;
        number = number * detail::kPowersOfTen[fractionCount] + detail::JoinDigits(digits);
    }
    if (wholeCount + fractionCount == 0)
        return nullptr;
    const double magnitude = static_cast<double>(number) / detail::kExactPowersOfTen[fractionCount];
    value = isNegative ? -magnitude : magnitude;
    return position;
}

} // namespace kr
