#include "core/common/DecimalText_p.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>
#include <system_error>

#include "core/common/AsciiText_p.h"

namespace kr {

namespace {

struct NamedValue {
    std::string_view name;
    double value;
};

// A sign in front of nan makes it no number.
constexpr NamedValue kNamedValues[] = {
    {"inf", std::numeric_limits<double>::infinity()},
    {"+inf", std::numeric_limits<double>::infinity()},
    {"-inf", -std::numeric_limits<double>::infinity()},
    {"nan", std::numeric_limits<double>::quiet_NaN()},
};

bool ParseNamedValue(std::string_view text, double& value)
{
    for (const NamedValue& named : kNamedValues) {
        if (EqualsIgnoringCase(text, named.name)) {
            value = named.value;
            return true;
        }
    }
    return false;
}

// The exponent as written, cut off far beyond what any double reaches.
long long WrittenExponent(std::string_view exponent)
{
    constexpr long long kFarBeyond = 1'000'000'000'000;
    const bool isNegative = exponent.front() == '-';
    long long magnitude = 0;
    for (const char character : exponent) {
        if (IsDecimalDigit(character) && magnitude < kFarBeyond)
            magnitude = magnitude * 10 + (character - '0');
    }
    return isNegative ? -magnitude : magnitude;
}

// Whether a number out of range is too large rather than too small, told from the place of its first digit.
bool IsAboveOne(std::string_view number)
{
    const std::size_t letter = number.find_first_of("eE");
    const std::string_view digits = number.substr(0, letter);
    const std::size_t leading = digits.find_first_of("123456789");
    const std::size_t point = std::min(digits.find('.'), digits.size());
    long long place = static_cast<long long>(point) - static_cast<long long>(leading);
    if (letter != std::string_view::npos)
        place += WrittenExponent(number.substr(letter + 1));
    return place > 0;
}

bool ParseDigits(const char* begin, const char* end, double& value)
{
    const bool isNegative = *begin == '-';
    if (isNegative || *begin == '+')
        ++begin;
    // Here from_chars would take a second sign and names of its own.
    if (begin == end || !(IsDecimalDigit(*begin) || *begin == '.'))
        return false;
    double magnitude = 0;
    const auto [position, error] = std::from_chars(begin, end, magnitude);
    if (position != end) // nor is it behind a point alone
        return false;
    const bool isInRange = error == std::errc();
    if (!isInRange && !IsAboveOne({begin, static_cast<std::size_t>(end - begin)}))
        return false;
    if (!isInRange)
        magnitude = std::numeric_limits<double>::infinity();
    value = isNegative ? -magnitude : magnitude;
    return isInRange;
}

} // namespace

bool ParseDecimal(const char* begin, const char* end, double& value)
{
    value = 0;
    if (begin == end)
        return false;
    if (ScanUsualDecimal(begin, end, value) == end)
        return true;
    value = 0;
    const std::string_view text(begin, static_cast<std::size_t>(end - begin));
    return ParseNamedValue(text, value) || ParseDigits(begin, end, value);
}

namespace {

char* Append(char* out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

} // namespace

char* detail::FormatWhole(char* out, float magnitude)
{
    if (std::isnan(magnitude))
        return Append(out, "nan");
    if (std::isinf(magnitude))
        return Append(out, "inf");
    return std::to_chars(out, out + kFixed6Capacity - 1, magnitude, std::chars_format::fixed, 6).ptr;
}

char* detail::FormatLongInteger(char* out, std::uint64_t value)
{
    return AppendTriple(FormatInteger(out, value / 1000), static_cast<std::uint32_t>(value % 1000));
}

} // namespace kr
