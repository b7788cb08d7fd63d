// Text of a page in one line.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::document {

// Blanks, tabs and line ends at the ends taken off, and those between words joined to one blank, as browsers do.
std::string WithSingleBlanks(std::string_view text);

}  // namespace quillcast::document
