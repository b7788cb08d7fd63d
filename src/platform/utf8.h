// Reading and writing UTF-8 (RFC 3629), one code point at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillcast::platform {

// What DecodeUtf8 gives for a byte that starts no well-formed sequence.
inline constexpr char32_t kNotUtf8 = 0xFFFFFFFF;
// What stands for bytes that are no character.
inline constexpr char32_t kReplacement = 0xFFFD;

// A step through a text goes on by `length`, whatever was found.
struct DecodedUtf8 {
  char32_t code;       // the code point, or kNotUtf8
  std::size_t length;  // bytes it takes; 1 with kNotUtf8
};

// The code point at the start of a text that is not empty. Surrogates, overlong forms and values above U+10FFFF are
// not well-formed.
DecodedUtf8 DecodeUtf8(std::string_view text);

// `code` is a Unicode scalar value; that is not looked at.
void AppendUtf8(std::string& out, char32_t code);

// Well-formed from end to end, so that a sequence cut off at the end is a fault; the empty text is none.
bool IsUtf8(std::string_view text);
// C0, DEL, or C1 as UTF-8 writes them.
bool HoldsControl(std::string_view text);
bool IsAscii(std::string_view text);
// How many ASCII characters the text begins with, and how many of the printable ones, the blank among them.
std::size_t AsciiRun(std::string_view text);
std::size_t PrintableRun(std::string_view text);

// How many bytes at the end of `text` may be the beginning of a sequence that continues beyond it: 0 to 3.
std::size_t IncompleteUtf8Tail(std::string_view text);

}  // namespace quillcast::platform
