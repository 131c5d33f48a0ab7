#include "fileformat/texture/Base64_p.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <QByteArray>
#include <QString>
#include <QtEndian>

namespace kr::texture {

namespace {

constexpr std::uint8_t kNoDigit = 0xff;

constexpr std::array<std::uint8_t, 256> DigitTable()
{
    constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 256> digits{};
    for (std::uint8_t& digit : digits)
        digit = kNoDigit;
    for (std::uint8_t value = 0; value < 64; ++value)
        digits[static_cast<unsigned char>(kAlphabet[value])] = value;
    return digits;
}

constexpr std::array<std::uint8_t, 256> kDigits = DigitTable();

/// Digits of six bits, gathered in groups of four, which make three bytes.
template<class Unit>
class Decoder {
    static_assert(std::is_unsigned_v<Unit>);

public:
    Decoder(const Unit* begin, const Unit* end, char* out) : m_position(begin), m_end(end), m_out(out) {}

    bool IsAtEnd() const { return m_position == m_end; }
    std::ptrdiff_t Left() const { return m_end - m_position; }
    /// The end of the bytes.
    const char* Out() const { return m_out; }

    // As long as four characters in a row are digits. Copies of both positions stay in registers: what is
    // stored could be the members themselves, as far as the compiler knows.
    void TakeWholeGroups()
    {
        const Unit* p = m_position;
        char* out = m_out;
        for (; m_end - p >= 4 && (p[0] | p[1] | p[2] | p[3]) <= 0xff; p += 4) {
            const std::uint32_t a = kDigits[p[0]], b = kDigits[p[1]], c = kDigits[p[2]], d = kDigits[p[3]];
            if ((a | b | c | d) > 63)
                break;
            // One byte too many, which the next group overwrites; there is room for it.
            qToBigEndian((a << 18 | b << 12 | c << 6 | d) << 8, out);
            out += 3;
        }
        m_position = p;
        m_out = out;
    }

    // Four digits wherever they stand, or the last ones; six bits alone make no byte.
    // @return the number of digits
    int TakeScatteredGroup()
    {
        std::uint32_t bits = 0;
        int count = 0;
        for (; m_position != m_end && count < 4; ++m_position) {
            const std::uint8_t digit = *m_position > 0xff ? kNoDigit : kDigits[*m_position];
            if (digit == kNoDigit)
                continue;
            bits = bits << 6 | digit;
            ++count;
        }
        Put(bits << 6 * (4 - count), count * 6 / 8);
        return count;
    }

private:
    // The upper bytes of 24 bits.
    void Put(std::uint32_t bits, int count)
    {
        for (int i = 0; i < count; ++i)
            *m_out++ = static_cast<char>(bits >> (16 - 8 * i) & 0xff);
    }

    const Unit* m_position;
    const Unit* m_end;
    char* m_out;
};

// With a byte to spare.
int MostBytes(int textSize)
{
    return textSize / 4 * 3 + 3;
}

} // namespace

QByteArray BytesOfBase64(const QString& text)
{
    QByteArray bytes(MostBytes(text.size()), Qt::Uninitialized);
    Decoder<ushort> decoder(text.utf16(), text.utf16() + text.size(), bytes.data());
    while (!decoder.IsAtEnd()) {
        decoder.TakeWholeGroups();
        decoder.TakeScatteredGroup();
    }
    bytes.truncate(static_cast<int>(decoder.Out() - bytes.constData()));
    return bytes;
}

std::optional<QByteArray> BytesOfPureBase64(const QByteArray& text)
{
    int size = text.size();
    while (size > 0 && text[size - 1] == '=')
        --size;
    const auto* const begin = reinterpret_cast<const uchar*>(text.constData());
    QByteArray bytes(MostBytes(size), Qt::Uninitialized);
    Decoder<uchar> decoder(begin, begin + size, bytes.data());
    decoder.TakeWholeGroups();
    const std::ptrdiff_t left = decoder.Left();
    if (left >= 4 || decoder.TakeScatteredGroup() != left)
        return std::nullopt;
    bytes.truncate(static_cast<int>(decoder.Out() - bytes.constData()));
    return bytes;
}

} // namespace kr::texture
