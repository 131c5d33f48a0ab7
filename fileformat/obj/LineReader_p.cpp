#include "fileformat/obj/LineReader_p.h"

#include <algorithm>
#include <cstring>

namespace kr::obj {

namespace {

bool IsVisibleAscii(int byte)
{
    return byte >= 0x21 && byte <= 0x7E;
}

// The first @p byte in [begin, end), or end.
const char* Find(char byte, const char* begin, const char* end)
{
    const void* const found = std::memchr(begin, byte, static_cast<std::size_t>(end - begin));
    return found ? static_cast<const char*>(found) : end;
}

} // namespace

bool LineReader::Next(std::string_view& line)
{
    LookAhead();
    // Nearly every line lies in the block as it is.
    if (m_newLine < std::min(m_backslash, m_nul)) {
        const char* const begin = m_source.Buffered().data();
        line = {begin, static_cast<std::size_t>(m_newLine - begin)};
        m_source.SkipTo(m_newLine + 1);
        return true;
    }
    const bool isLine = Assemble();
    line = m_line;
    return isLine;
}

std::string_view LineReader::WholeLines()
{
    const std::string_view bytes = m_source.Buffered();
    if (m_wholeLinesBlock != m_source.BlockNumber()) {
        m_wholeLinesBlock = m_source.BlockNumber();
        m_wholeLinesEnd = bytes.data() + (bytes.rfind('\n') + 1);
    }
    return bytes.substr(0, static_cast<std::size_t>(std::max(m_wholeLinesEnd, bytes.data()) - bytes.data()));
}

void LineReader::LookAhead()
{
    const std::string_view bytes = m_source.Buffered();
    const bool isOtherBlock = m_searchedBlock != m_source.BlockNumber();
    m_searchedBlock = m_source.BlockNumber();
    const auto renew = [&bytes, isOtherBlock](const char*& place, char byte) {
        if (isOtherBlock || place < bytes.data())
            place = Find(byte, bytes.data(), bytes.data() + bytes.size());
    };
    renew(m_newLine, '\n');
    renew(m_backslash, '\\');
    renew(m_nul, '\0');
}

// A backslash is held back until it is known what follows: a visible character brings it out, the end of the
// line is swallowed by it. Blanks and the bytes of other alphabets leave it waiting, but do not bring it out,
// as only the byte right before counts then. One that swallowed a line end still counts as that byte.
bool LineReader::Assemble()
{
    m_line.clear();
    int byte = m_source.NextByte();
    if (byte < 0)
        return false;
    bool isJoining = false;
    int previous = 0;
    for (; byte > 0; byte = m_source.NextByte()) {
        if (byte == '\n' && !isJoining)
            break;
        if (byte == '\n') {
            isJoining = false;
            continue;
        }
        if (byte == '\\') {
            isJoining = true;
        } else {
            if (IsVisibleAscii(byte)) {
                isJoining = false;
                if (previous == '\\')
                    m_line.push_back('\\');
            }
            m_line.push_back(static_cast<char>(byte));
            if (m_line.size() > kLongestLine)
                return false;
        }
        previous = byte;
    }
    return true;
}

} // namespace kr::obj
