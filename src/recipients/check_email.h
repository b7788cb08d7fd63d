// The one rule for addresses: a case-insensitive search for
// ([a-zA-Z0-9_\-\.]+)@([a-zA-Z0-9_\-\.]+)\.([a-zA-Z]{2,5})
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "platform/prompts.h"

namespace quillcast::recipients {

// In bytes of the text.
struct AddressMatch {
  std::size_t position;
  std::size_t length;
  bool is_cut;  // its word goes on, see IsCut
};

// The first match at or after `from`, with the extent that a backtracking matcher gives it. To find all, go on from its
// end. Finding all takes time linear in the text.
std::optional<AddressMatch> FindAddress(std::string_view text, std::size_t from);

// How much of `run`, the characters after an "@", belongs to a match: everything to the end of the top-level part.
// 0 when there is no match. `run` holds only characters for which IsAddressCharacter is true.
std::size_t DomainLength(std::string_view run);

// Whether a word goes on behind a byte of UTF-8, given whether one did before it. An apostrophe or a plus sign leaves
// it as it was: they stand in words, and round them.
bool GoesOn(char c, bool so_far);

// Whether a match is only a part of its word: o'brien@x.org gives brien@x.org, and a@x.museum a@x.museu. `inside`:
// whether a word goes on into the match; `rest`: the address characters behind it, and `next` what ends them, 0 at the
// end of the text.
bool IsCut(bool inside, std::string_view rest, char next);

// [a-zA-Z0-9_\-\.]
bool IsAddressCharacter(char c);

// Whether the rule is met anywhere in the text. A name before the address, or text after it, is no fault.
bool CheckEmail(std::string_view text);

// The same, and "Invalid email address." when it is not.
bool CheckEmail(std::string_view text, platform::Prompts& prompts);

}  // namespace quillcast::recipients
