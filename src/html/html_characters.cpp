// The character references of HTML: numbers and names.
#include <algorithm>
#include <array>
#include <cstdint>

#include "html/html_character_names.h"
#include "html/html_tokenizer.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::html {
namespace {

// Numbers that mean windows-1252 (WHATWG 13.2.5.80), from 0x80 on; 0 where the number means itself.
constexpr std::array<char16_t, 32> kRemapped = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                                0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr std::size_t kLongestBareName = 6;   // "Aacute"; the names that go without a semicolon
constexpr std::size_t kShortestBareName = 2;  // "lt"

// A reference that was understood: its character, and how many bytes it takes with its "&". Nothing: length 0.
struct Reference {
  char32_t code = 0;
  std::size_t length = 0;
};

// Latin-1 and the four of the markup itself are known without their semicolon.
bool IsBareName(std::string_view name, char32_t code) {
  constexpr std::array<std::string_view, 8> kOfMarkup = {"amp", "lt", "gt", "quot", "AMP", "LT", "GT", "QUOT"};
  return (code >= 0xA0 && code <= 0xFF) || std::find(kOfMarkup.begin(), kOfMarkup.end(), name) != kOfMarkup.end();
}

Reference ReadName(std::string_view text, bool in_attribute) {
  std::size_t end = 1;
  while (end < text.size() && end <= kLongestCharacterName && platform::AsciiIsAlnum(text[end])) ++end;
  if (end < text.size() && text[end] == ';') {
    const char32_t code = CharacterOfName(text.substr(1, end - 1));
    if (code != 0) return {code, end + 1};
  }
  for (std::size_t size = std::min(end - 1, kLongestBareName); size >= kShortestBareName; --size) {
    const std::string_view name = text.substr(1, size);
    const char32_t code = CharacterOfName(name);
    if (code == 0 || !IsBareName(name, code)) continue;
    const char next = size + 1 < text.size() ? text[size + 1] : ' ';
    if (in_attribute && (next == '=' || platform::AsciiIsAlnum(next))) return {};
    return {code, size + 1};
  }
  return {};
}

int DigitValue(char c, int base) {
  const char lower = platform::AsciiLower(c);
  if (c >= '0' && c <= '9') return c - '0';
  return base == 16 && lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

Reference ReadNumber(std::string_view text) {
  const bool hex = text.size() > 2 && (text[2] == 'x' || text[2] == 'X');
  const int base = hex ? 16 : 10;
  const std::size_t first = hex ? 3 : 2;
  std::size_t at = first;
  char32_t code = 0;
  for (; at < text.size() && DigitValue(text[at], base) >= 0; ++at) {
    code = std::min<char32_t>(code * static_cast<char32_t>(base) + static_cast<char32_t>(DigitValue(text[at], base)),
                              0x110000);
  }
  if (at == first) return {};
  if (at < text.size() && text[at] == ';') ++at;
  if (code == 0 || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) code = 0xFFFD;
  if (code >= 0x80 && code < 0xA0 && kRemapped[code - 0x80] != 0) code = kRemapped[code - 0x80];
  return {code, at};
}

}  // namespace

std::string DecodeCharacterReferences(std::string_view text, bool in_attribute) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t plain = std::min(text.find('&'), text.size());
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) break;
    const bool numeric = text.size() > 1 && text[1] == '#';
    const Reference reference = numeric ? ReadNumber(text) : ReadName(text, in_attribute);
    if (reference.length == 0) {
      out += '&';
      text.remove_prefix(1);
    } else {
      platform::AppendUtf8(out, reference.code);
      text.remove_prefix(reference.length);
    }
  }
  return out;
}

}  // namespace quillcast::html
