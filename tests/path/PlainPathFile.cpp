#include "tests/path/PlainPathFile.h"

#include <cstdint>
#include <cstring>

namespace test {

namespace {

const QByteArray kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void Put(QByteArray& out, std::uint64_t bits, int byteCount)
{
    for (int i = 0; i < byteCount; ++i)
        out += static_cast<char>(bits >> 8 * i & 0xff);
}

void PutCount(QByteArray& out, std::size_t count)
{
    Put(out, count, 4);
}

void PutReal(QByteArray& out, double value)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    Put(out, bits, 8);
}

QByteArray EncodePlainly(const QByteArray& bytes)
{
    QByteArray text;
    for (int i = 0; i < bytes.size(); i += 3) {
        const int there = qMin(bytes.size() - i, 3);
        unsigned bits = 0;
        for (int k = 0; k < 3; ++k)
            bits = bits << 8 | (k < there ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (int k = 0; k < 4; ++k)
            text += k <= there ? kAlphabet[static_cast<int>(bits >> (18 - 6 * k) & 63)] : '=';
    }
    return text;
}

QByteArray DecodePlainly(const QByteArray& text)
{
    QByteArray bytes;
    unsigned bits = 0;
    int bitCount = 0;
    for (const char letter : text) {
        const int value = kAlphabet.indexOf(letter);
        if (value < 0)
            continue;
        bits = (bits << 6 | static_cast<unsigned>(value)) & 0xffff;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes += static_cast<char>(bits >> bitCount & 0xff);
        }
    }
    return bytes;
}

QByteArray EncodedName(const std::string& name)
{
    QByteArray bytes;
    for (const QChar unit : QString::fromStdString(name))
        Put(bytes, unit.unicode(), 2);
    return EncodePlainly(bytes);
}

QString DecodedName(const QByteArray& base64)
{
    const QByteArray bytes = DecodePlainly(base64);
    QString name;
    for (int i = 0; i < bytes.size(); i += 2) {
        const unsigned low = static_cast<unsigned char>(bytes[i]);
        const unsigned high = i + 1 < bytes.size() ? static_cast<unsigned char>(bytes[i + 1]) : 0u;
        name += QChar(static_cast<ushort>(high << 8 | low));
    }
    return name;
}

/// Thrown at the end of the bytes.
struct TooShort {};

class Fields {
public:
    explicit Fields(const QByteArray& bytes) : m_bytes(bytes) {}

    QByteArray Bytes(int size)
    {
        if (size > m_bytes.size() - m_position)
            throw TooShort();
        m_position += size;
        return m_bytes.mid(m_position - size, size);
    }
    std::uint64_t Number(int size)
    {
        const QByteArray bytes = Bytes(size);
        std::uint64_t bits = 0;
        for (int i = size - 1; i >= 0; --i)
            bits = bits << 8 | static_cast<unsigned char>(bytes[i]);
        return bits;
    }
    int Integer() { return static_cast<int>(static_cast<std::uint32_t>(Number(4))); }
    double Real()
    {
        const std::uint64_t bits = Number(8);
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

private:
    QByteArray m_bytes;
    int m_position = 0;
};

PathContent ReadFields(Fields fields)
{
    PathContent content;
    const int setCount = fields.Integer();
    for (int set = 0; set < setCount; ++set) {
        const int id = fields.Integer();
        const int nameLength = fields.Integer();
        content.names[id] = nameLength > 0 ? DecodedName(fields.Bytes(nameLength)) : QString();
        content.paths[id] = {};
        const int contourCount = fields.Integer();
        for (int contour = 0; contour < contourCount; ++contour) {
            content.paths[id].emplace_back();
            const int pointCount = fields.Integer();
            for (int point = 0; point < pointCount; ++point) {
                const double x = fields.Real();
                content.paths[id].back().emplace_back(x, fields.Real());
            }
        }
    }
    return content;
}

} // namespace

QByteArray WritePathsPlainly(const DXFPathFile::Paths& paths, const std::map<int, std::string>& names)
{
    QByteArray out;
    PutCount(out, paths.size());
    for (const auto& [id, contours] : paths) {
        const QByteArray name = names.count(id) > 0 ? EncodedName(names.at(id)) : QByteArray();
        Put(out, static_cast<std::uint32_t>(id), 4);
        Put(out, static_cast<std::uint32_t>(name.size()), 4);
        out += name;
        PutCount(out, contours.size());
        for (const auto& contour : contours) {
            PutCount(out, contour.size());
            for (const auto& point : contour) {
                PutReal(out, point.x);
                PutReal(out, point.y);
            }
        }
    }
    return out;
}

std::optional<PathContent> ReadPathsPlainly(const QByteArray& bytes)
{
    try {
        return ReadFields(Fields(bytes));
    } catch (const TooShort&) {
        return std::nullopt;
    }
}

bool HaveSameBits(const DXFPathFile::Paths& a, const DXFPathFile::Paths& b)
{
    return WritePathsPlainly(a, {}) == WritePathsPlainly(b, {});
}

} // namespace test
