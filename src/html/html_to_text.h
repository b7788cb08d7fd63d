// A plain-text reading of HTML, for the text part of a message.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillcast::html {

// Columns of the usual text, as people who write plain mail have them.
inline constexpr std::size_t kTextColumns = 76;

// Paragraphs, headings and the parts of a page stand apart by a blank line; lists have "- " or "1. " or their letters,
// those of word processors too; quotations "> ", rules "----"; the cells of a table row are two blanks apart, and where
// a table only arranges the page its parts stand one below the other; a link is followed by its target in angle
// brackets when neither the text says it already nor, for a picture without words, the link beside it; a picture is its
// alt text. What is not displayed is left out, as far as the element itself says so: style sheets are not applied.
//
// Lines end in "\n", without blanks before it, and are wrapped at `columns` between words, under what stands before
// them: an address, or any other word, is never broken, nor is preformatted text. Empty when there is nothing to read.
// Merge tags pass unchanged. The HTML is UTF-8. Linear in time, and does not recurse: any depth of nesting will do, of
// which a few levels are drawn; what lies deeper than 500 stands beside the innermost, as in browsers. The text is at
// most 16 times as long as the HTML.
std::string HtmlToText(std::string_view html, std::size_t columns = kTextColumns);

}  // namespace quillcast::html
