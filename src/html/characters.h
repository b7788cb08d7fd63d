// What the single characters of a page, a style or an address are, by their bytes. Those above 127 are none of these.
#pragma once

#include <string_view>

namespace quillcast::html {

// What parts words in HTML and CSS.
inline constexpr std::string_view kSpaces = " \t\r\n\f";
constexpr bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f'; }

// What a line of a text may end at.
constexpr bool IsBlank(char c) { return c == ' ' || c == '\t'; }

constexpr bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

constexpr bool IsHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

// Of a path, as Windows and as others write it.
inline constexpr std::string_view kSlashes = "/\\";
constexpr bool IsSlash(char c) { return c == '/' || c == '\\'; }

}  // namespace quillcast::html
