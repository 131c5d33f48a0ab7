#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "core/common/AsciiText_p.h"
#include "fileformat/common/BlockReader_p.h"

namespace kr::stl {

/// A-Z a-z 0-9 - . + make up tokens; every other byte separates them.
constexpr bool IsTokenByte(int byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
           byte == '-' || byte == '.' || byte == '+';
}

/// What the C locale calls white space, whatever locale is set.
constexpr bool IsWhiteSpace(int byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

constexpr std::string_view kSolid = "solid";

/// Reads the next token and the byte behind it, which is lost.
/// @param capacity  characters that are kept; a longer token is read whole all the same
/// @return the characters kept, 0 when the input ended before a token
template<class ByteSource>
std::size_t ReadToken(ByteSource& source, char* buffer, std::size_t capacity)
{
    int byte = source.NextByte();
    while (byte >= 0 && !IsTokenByte(byte))
        byte = source.NextByte();
    std::size_t length = 0;
    for (; IsTokenByte(byte); byte = source.NextByte()) {
        if (length < capacity)
            buffer[length++] = static_cast<char>(byte);
    }
    return length;
}

/// The latest bytes of a search.
class Probe {
public:
    explicit Probe(std::string_view bytes = {}) : m_bytes(bytes) {}

    std::string_view Bytes() const { return std::string_view(m_bytes).substr(m_begin); }
    void Clear()
    {
        m_bytes.clear();
        m_begin = 0;
    }
    /// Appends a byte and drops the first one when that makes more than @p size.
    /// @return true when the probe holds at least @p size bytes
    bool Append(int byte, std::ptrdiff_t size)
    {
        m_bytes.push_back(static_cast<char>(byte));
        if (Length() > size)
            ++m_begin;
        return Length() >= size;
    }

private:
    std::ptrdiff_t Length() const { return static_cast<std::ptrdiff_t>(m_bytes.size() - m_begin); }

    // Dropped bytes stay in front until the probe is emptied: a search is short, and nothing has to be moved.
    std::string m_bytes;
    std::size_t m_begin = 0;
};

/// The values are those that STLFile::skipWhiteSpace returns.
enum class SolidSearch { ReadFailed = 0, Found = 1, NotFound = 2 };

/// So many bytes, white space aside, are searched in vain before the search gives up.
constexpr int kSolidSearchLimit = 10'240;

/// Searches for "solid" as STLFile::skipWhiteSpace describes.
template<class ByteSource>
SolidSearch FindSolid(ByteSource& source, Probe& probe, int probeSize)
{
    int searched = 0;
    while (searched <= kSolidSearchLimit) {
        const int byte = source.NextByte();
        if (byte < 0)
            return byte == kEndOfInput ? SolidSearch::NotFound : SolidSearch::ReadFailed;
        if (IsWhiteSpace(byte)) {
            probe.Clear();
            continue;
        }
        if (probe.Append(byte, probeSize) && EqualsIgnoringCase(probe.Bytes(), kSolid))
            return SolidSearch::Found;
        ++searched;
    }
    return SolidSearch::NotFound;
}

} // namespace kr::stl
