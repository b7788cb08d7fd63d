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
  // The headings name the address, or two other fields, and none of them is an address itself.
  bool looks_like_headings = false;
};

// Blanks, signs, quotes and case do not count. Fields behind the eighteenth are found too.
HeadingMapping MapByHeadings(std::span<const std::string_view> headings);

}  // namespace quillcast::recipients
