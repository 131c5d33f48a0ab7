#include "fileformat/texture/Base64_p.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include <QByteArray>
#include <QString>

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
class Decoder {
public:
    Decoder(const ushort* begin, const ushort* end, char* out) : m_position(begin), m_end(end), m_out(out) {}

    /// The end of the bytes.
    char* Run()
    {
        while (m_position != m_end) {
            TakeWholeGroups();
            TakeScatteredGroup();
        }
        return m_out;
    }

private:
    // As long as four characters in a row are digits.
    void TakeWholeGroups()
    {
        for (; m_end - m_position >= 4; m_position += 4) {
            const ushort* const p = m_position;
            if ((p[0] | p[1] | p[2] | p[3]) > 0xff)
                return;
            const std::uint32_t a = kDigits[p[0]], b = kDigits[p[1]], c = kDigits[p[2]], d = kDigits[p[3]];
            if ((a | b | c | d) > 63)
                return;
            Put(a << 18 | b << 12 | c << 6 | d, 3);
        }
    }

    // Four digits wherever they stand, or the last ones; six bits alone make no byte.
    void TakeScatteredGroup()
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
    }

    // The upper bytes of 24 bits.
    void Put(std::uint32_t bits, int count)
    {
        for (int i = 0; i < count; ++i)
            *m_out++ = static_cast<char>(bits >> (16 - 8 * i) & 0xff);
    }

    const ushort* m_position;
    const ushort* m_end;
    char* m_out;
};

} // namespace

QByteArray BytesOfBase64(const QString& text)
{
    QByteArray bytes(text.size() / 4 * 3 + 3, Qt::Uninitialized);
    const char* const end = Decoder(text.utf16(), text.utf16() + text.size(), bytes.data()).Run();
    bytes.truncate(static_cast<int>(end - bytes.constData()));
    return bytes;
}

} // namespace kr::texture
