// A plain-text reading of HTML, for the text part of a message.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::html {

// Paragraphs, headings and the parts of a page stand apart by a blank line; lists have "- " or "1. " or their letters,
// quotations "> ", rules "----"; the cells of a table row are two blanks apart; a link is followed by its target in
// angle brackets when neither the text says it already nor, for a picture without words, the link beside it; a picture
// is its alt text. What is not displayed is left out, as far as the element itself says so: style sheets are not
// applied. Lines end in "\n", without blanks before it; empty when there is nothing to read. Merge tags pass unchanged.
// The HTML is UTF-8. Linear in time, and does not recurse: any depth of nesting will do, of which a few levels are
// drawn; what lies deeper than 500 stands beside the innermost, as in browsers. The text is at most 16 times as long as
// the HTML.
std::string HtmlToText(std::string_view html);

}  // namespace quillcast::html
