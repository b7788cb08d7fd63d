// A mapping out of the line of headings that many lists begin with.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/import/import_mapping.h"

namespace quillcast::recipients {

struct HeadingMapping {
  ImportMapping mapping;  // what each heading says; of several that say the same the plainest, then the first
  std::vector<std::size_t> columns;  // of all headings that say something, in the order of the recipient's fields
  std::vector<std::size_t> beyond;   // those of them behind the eighteenth, which are not mapped
  bool names_address = false;        // mapped or beyond
  // The headings name the address, or two other fields, and none of them is an address itself.
  bool looks_like_headings = false;
};

// Blanks, signs, quotes and case do not count. With `columns` taken (see TakenFields) nothing would be beyond.
HeadingMapping MapByHeadings(std::span<const std::string_view> headings);

}  // namespace quillcast::recipients
