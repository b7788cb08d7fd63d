// The one rule for addresses: a case-insensitive search for
// ([a-zA-Z0-9_\-\.]+)@([a-zA-Z0-9_\-\.]+)\.([a-zA-Z]{2,5})
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/prompts.h"

namespace quillcast::recipients {

struct AddressMatch {
  std::size_t position;
  std::size_t length;
  bool cuts_top_level;  // more letters follow the five that the rule takes
};

// The first match at or after `from`, with the extent that a backtracking matcher gives it. To find all, go on from its
// end. Finding all takes time linear in the text.
std::optional<AddressMatch> FindAddress(std::string_view text, std::size_t from);

// How much of `run`, the characters after an "@", belongs to a match: everything to the end of the top-level part.
// 0 when there is no match. `run` holds only characters for which IsAddressCharacter is true.
std::size_t DomainLength(std::string_view run);

// Whether the top-level part goes on with letters behind the `taken` characters that DomainLength gave.
bool DomainLengthCuts(std::string_view run, std::size_t taken);

// [a-zA-Z0-9_\-\.]
bool IsAddressCharacter(char c);

// Whether the rule is met anywhere in the text. A name before the address, or text after it, is no fault.
bool CheckEmail(std::string_view text);

// The same, and "Invalid email address." when it is not.
bool CheckEmail(std::string_view text, platform::Prompts& prompts);

}  // namespace quillcast::recipients
