#pragma once

#include <cstddef>
#include <string_view>

namespace kr {

constexpr char ToLowerAscii(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

/// Whether a text is a keyword in any mixture of cases; only A-Z and a-z have cases, in every locale.
/// @param keyword  in lower case
constexpr bool EqualsIgnoringCase(std::string_view text, std::string_view keyword)
{
    if (text.size() != keyword.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (ToLowerAscii(text[i]) != keyword[i])
            return false;
    }
    return true;
}

} // namespace kr
