// How names are written: "o'neill" as "O'Neill", "MCDONALD" as "McDonald", "VAN DER BERG" as "van der Berg".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillcast::recipients {

// Particles ("van", "de la") are small in a last name wherever they stand, in a first name behind its first word.
enum class NamePart : std::uint8_t { kFirst, kLast };

// A word that is all capitals or all small is written anew; one in mixed case is somebody's choice and stays, but for
// what follows "Mc" or an apostrophe. Blanks stay as they are. A text that is no UTF-8 is given back as it is.
std::string Capitalise(std::string_view name, NamePart part);

}  // namespace quillcast::recipients
