// The delimiters that separate the fields of a text file of recipients; import and export share them.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "platform/text.h"

namespace quillcast::recipients {

struct Delimiter {
  std::string_view name;
  char character;
};

inline constexpr std::array<Delimiter, 5> kDelimiters = {
    {{"Tab", '\t'}, {"Colon", ':'}, {"Space", ' '}, {"Comma", ','}, {"Semicolon", ';'}}};

// Names are taken in any case.
inline std::optional<char> DelimiterOf(std::string_view name) {
  for (const Delimiter& delimiter : kDelimiters) {
    if (platform::EqualsIgnoringAsciiCase(delimiter.name, name)) return delimiter.character;
  }
  return {};
}

// Of a character of the table; empty for any other.
inline std::string_view NameOf(char delimiter) {
  for (const Delimiter& known : kDelimiters) {
    if (known.character == delimiter) return known.name;
  }
  return {};
}

}  // namespace quillcast::recipients
