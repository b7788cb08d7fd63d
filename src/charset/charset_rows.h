// The table of the character sets that are served.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "charset/coded_characters.h"

namespace quillcast::charset {

// How the text of a set is laid out in bytes.
enum class CharsetForm {
  kUtf8,
  kUtf7,
  kPlain,      // ASCII is itself, everything else has its own bytes
  kIso2022Jp,  // ISO-2022-JP (RFC 1468)
  kIso2022Kr,  // ISO-2022-KR (RFC 1557)
  kHz,         // HZ (RFC 1843)
};

// A row never moves: Charset points to it.
struct CharsetRow {
  std::string_view mime_name;  // as it goes into a message
  CharsetForm form;
  CharacterSource source;
  std::array<std::string_view, 3> aliases;
};

// UTF-8 first (Charset::Utf8 takes that one); beyond it the order does not count.
std::span<const CharsetRow> CharsetRows();

// The characters of a row; read at its first use, which any thread may make.
const CodedCharacters& CharactersOf(const CharsetRow& row);

}  // namespace quillcast::charset
