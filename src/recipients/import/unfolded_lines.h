// The lines of an address book, each put together again out of the pieces that it was folded into.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "recipients/import/line_reader.h"

namespace quillcast::recipients {

struct UnfoldingRules {
  // Of the first piece: whether anything in the line is wanted. Where not, nothing of it is kept, however long it is.
  bool (*is_wanted)(std::string_view first_piece);
  // Of the first piece: whether the line goes on behind each piece that ends in "=", as quoted-printable does.
  bool (*goes_on_behind_equals)(std::string_view first_piece);
};

// A piece that begins with a blank or a tab goes on with the line before, without that. A line that is not wanted, or
// grows longer than kLongestContactValue, is left out. `take` gets each of the others; false ends the reading.
Result<void> ReadUnfolded(TextSource& source, const UnfoldingRules& rules,
                          const std::function<bool(std::string_view line)>& take);

}  // namespace quillcast::recipients
