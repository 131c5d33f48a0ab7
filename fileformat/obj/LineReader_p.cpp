#include "fileformat/obj/LineReader_p.h"

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
    // Nearly every line lies in the block as it is.
    const std::string_view bytes = m_source.Buffered();
    const char* const begin = bytes.data();
    const char* const newLine = Find('\n', begin, begin + bytes.size());
    if (newLine != begin + bytes.size() && !HasSpecialByteBefore(newLine)) {
        line = {begin, static_cast<std::size_t>(newLine - begin)};
        m_source.SkipTo(newLine + 1);
        return true;
    }
    const bool isLine = Assemble();
    line = m_line;
    return isLine;
}

std::string_view LineReader::WholeLines() const
{
    const std::string_view bytes = m_source.Buffered();
    return bytes.substr(0, bytes.rfind('\n') + 1);
}

bool LineReader::HasSpecialByteBefore(const char* position)
{
    const std::string_view bytes = m_source.Buffered();
    const char* const begin = bytes.data();
    const char* const end = begin + bytes.size();
    const bool isOtherBlock = m_searchedBlock != m_source.BlockNumber();
    m_searchedBlock = m_source.BlockNumber();
    if (isOtherBlock || m_backslash < begin)
        m_backslash = Find('\\', begin, end);
    if (isOtherBlock || m_nul < begin)
        m_nul = Find('\0', begin, end);
    return m_backslash < position || m_nul < position;
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
