#include "fileformat/3mf/PlainElements_p.h"

#include <cstring>
#include <string_view>

#include "core/common/ShortNumberText_p.h"

namespace kr::package3mf {

namespace {

// No tag and no plain attribute needs more than the room in front of the end that this leaves; a document is
// so much longer than its last elements that they may as well be read the other way.
constexpr std::ptrdiff_t kRoom = 256;
constexpr std::ptrdiff_t kLongestNumber = 64;

const char* Expect(const char* position, std::string_view text)
{
    return std::memcmp(position, text.data(), text.size()) == 0 ? position + text.size() : nullptr;
}

bool IsWhiteSpace(char character)
{
    return character == ' ' || character == '\n' || character == '\t' || character == '\r';
}

// From in front of the white space before an attribute to its value; null where less than the room is left.
const char* FindValue(const char* position, const char* end, std::string_view nameAndQuote)
{
    if (!IsWhiteSpace(*position))
        return nullptr;
    position = SkipWhiteSpace(position);
    return end - position < kRoom ? nullptr : Expect(position, nameAndQuote);
}

// Behind the name of a tag, from its '<'.
const char* FindAttributes(const char* position, const char* end, std::string_view tag)
{
    return end - position < kRoom ? nullptr : Expect(position, tag);
}

const char* ReadNumber(const char* position, float& value)
{
    double number = 0;
    const char* behind = ScanShortDecimal(position, number);
    if (!behind || *behind != '"') {
        const void* const quote = std::memchr(position, '"', kLongestNumber);
        behind = static_cast<const char*>(quote);
        if (!quote || !ParseDecimal(position, behind, number))
            return nullptr;
    }
    value = static_cast<float>(number);
    return behind + 1;
}

const char* ReadIndex(const char* position, int& value)
{
    position = ScanShortInteger(position, value);
    return position && *position == '"' ? position + 1 : nullptr;
}

const char* SkipProperties(const char* position, const char* end)
{
    for (const std::string_view name : {"pid=\"", "p1=\"", "p2=\"", "p3=\""}) {
        int ignored;
        const char* const value = FindValue(position, end, name);
        const char* const behind = value ? ReadIndex(value, ignored) : nullptr;
        if (value && !behind)
            return nullptr;
        if (behind)
            position = behind;
    }
    return position;
}

// White space may reach up to the '<' at the end, but no further.
const char* ReadEnd(const char* position)
{
    position = SkipWhiteSpace(position);
    return position[0] == '/' && position[1] == '>' ? position + 2 : nullptr;
}

} // namespace

const char* SkipWhiteSpace(const char* position)
{
    while (IsWhiteSpace(*position))
        ++position;
    return position;
}

const char* ReadPlainVertex(const char* position, const char* end, Vector3D<float>& vertex)
{
    struct {
        std::string_view name;
        float* value;
    } const attributes[] = {{"x=\"", &vertex.x}, {"y=\"", &vertex.y}, {"z=\"", &vertex.z}};
    position = FindAttributes(position, end, "<vertex");
    for (const auto& attribute : attributes) {
        position = position ? FindValue(position, end, attribute.name) : nullptr;
        position = position ? ReadNumber(position, *attribute.value) : nullptr;
    }
    return position ? ReadEnd(position) : nullptr;
}

const char* ReadPlainTriangle(const char* position, const char* end, TriangleFace& face)
{
    constexpr std::string_view kNames[] = {"v1=\"", "v2=\"", "v3=\""};
    position = FindAttributes(position, end, "<triangle");
    for (int i = 0; i < 3; ++i) {
        position = position ? FindValue(position, end, kNames[i]) : nullptr;
        position = position ? ReadIndex(position, face[i]) : nullptr;
    }
    position = position ? SkipProperties(position, end) : nullptr;
    return position ? ReadEnd(position) : nullptr;
}

} // namespace kr::package3mf
