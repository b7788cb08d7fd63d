// What the elements of HTML do to a plain-text reading of it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quillcast::html {

// The order counts: IsStacked and IsBlock compare.
enum class HtmlRole : std::uint8_t {
  // These stay open until they are closed,
  kBulleted,
  kNumbered,
  kItem,
  kQuotation,
  kDescription,
  kPreformatted,
  kTable,
  kRow,
  // these are further blocks,
  kCell,
  kLine,
  kParagraph,
  kHeading,
  // and these are none.
  kLink,
  kBreak,
  kRule,
  kPicture,
  kArea,
  kQuote,
  kDropped,
  kInline
};
constexpr std::size_t kStackedRoles = static_cast<std::size_t>(HtmlRole::kRow) + 1;

// By the name in lower case.
HtmlRole RoleOf(std::string_view name);
inline bool IsStacked(HtmlRole role) { return static_cast<std::size_t>(role) < kStackedRoles; }
inline bool IsBlock(HtmlRole role) { return role <= HtmlRole::kHeading; }
// What is begun anew in the next paragraph where it was left open (WHATWG HTML 13.2.4.3).
bool IsFormatting(std::string_view name);
// The head, foot or a body of a table.
bool IsRowGroup(std::string_view name);
// Such an element has no end tag.
bool HasNoContent(std::string_view name);

template <typename Names>
bool IsAmong(std::string_view name, const Names& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace quillcast::html
