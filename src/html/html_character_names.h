// The names of characters in HTML.
#pragma once

#include <cstddef>
#include <string_view>

namespace quillcast::html {

inline constexpr std::size_t kLongestCharacterName = 9;  // "checkmark"

// The character of a name, without "&" and ";"; 0 when it is not known. The names of HTML 4 are known, and those of
// HTML 5 for Latin and Cyrillic letters, signs of ASCII, punctuation and the symbols that letters use.
char32_t CharacterOfName(std::string_view name);

}  // namespace quillcast::html
