// Breaks the lines of a text, or of HTML, so that none is longer than a width in characters where that can be.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillcast::mime {

// Line ends are "\n". Lines are broken at blanks, which go; a word that is longer than the width stays whole.
std::string WrapText(std::string_view utf8, std::size_t width);

// The same, and the HTML means what it meant: broken where white space does not count.
std::string WrapHtml(std::string_view html, std::size_t width);

}  // namespace quillcast::mime
