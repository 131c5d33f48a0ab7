#include "fileformat/3mf/GeneralNumber_p.h"

#include <charconv>

#include <QString>

namespace kr::package3mf::detail {

namespace {

// Digit by digit as Qt has it, also where it differs from printf: an exact tie rounds away from zero.
char* FormatByQt(char* out, float value)
{
    const QByteArray text = QStringLiteral("%1").arg(static_cast<double>(value), 0, 'g', -1).toLatin1();
    std::memcpy(out, text.constData(), static_cast<std::size_t>(text.size()));
    return out + text.size();
}

} // namespace

char* FormatGeneral6Unusual(char* out, float value)
{
    if (value == 0) {
        *out = '0';
        return out + 1;
    }
    // Below the smallest number without an exponent no float is a tie of six digits.
    if (std::fabs(value) < kFirstWithoutExponent)
        return std::to_chars(out, out + kGeneral6Capacity, value, std::chars_format::general, 6).ptr;
    return FormatByQt(out, value);
}

} // namespace kr::package3mf::detail
