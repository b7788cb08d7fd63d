// How the items of an ordered list in HTML are counted.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillcast::html {

// The number that a "start" or "value" attribute gives, else `otherwise`; at most nine digits count.
std::int64_t ListNumber(std::string_view attribute, std::int64_t otherwise);

// The number as the "type" of the list shows it: "a", "A", "i", "I", else in digits, as what the others have no sign
// for.
std::string ListNumeral(std::int64_t number, std::string_view type);

}  // namespace quillcast::html
