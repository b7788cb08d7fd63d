// Finds out which delimiter parts the fields of a list.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "recipients/delimiters.h"

namespace quillcast::recipients {

struct FoundDelimiter {
  Delimiter delimiter = kDelimiters[3];
  bool is_needed = false;  // false: the lines have one field each, whichever it is
  bool is_quoted = false;  // most addresses stand in quotes
};

// By the first lines of a list, as they stand: the delimiter that cuts an address, alone in its field, out of the same
// place of most lines; where there are no addresses, the one that cuts most lines into equally many fields.
FoundDelimiter FindDelimiter(std::span<const std::string> lines);

bool IsQuoted(std::string_view field);

// Whether a field is an address with nothing but blanks or quotes around it, as far as a delimiter could have gone
// wrong: there is nothing else that parts texts in it.
bool IsBareAddress(std::string_view field);

}  // namespace quillcast::recipients
