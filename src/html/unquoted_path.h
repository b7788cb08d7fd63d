// A path with blanks that stands in a tag without quotation marks, as in "<img src=C:\\My Pictures\\x.png>": its first
// word is the value of an attribute, and the others look like the names of further ones.
#pragma once

#include <cstddef>
#include <string_view>

#include "html/html_tokenizer.h"

namespace quillcast::html {

// The index of the last attribute, none of them with a value, that a word of the tag goes on to which begins with the
// one at `index`: a name ends at a slash.
std::size_t LastOfWord(const HtmlTokenizer& page, const HtmlToken& tag, std::size_t index);

// The index of the last attribute whose name belongs to the value of the one at `index`: that one itself where there is
// no other, and behind an address of the net. Behind what ends as a file, and behind the closed bracket of a
// "url(", only words with a backslash belong to it.
std::size_t LastOfValue(const HtmlTokenizer& page, const HtmlToken& tag, std::size_t index);

// The value with them, a part of the page. `attribute` is one of the tag's.
std::string_view WholeValue(const HtmlTokenizer& page, const HtmlToken& tag, const HtmlAttribute& attribute);

}  // namespace quillcast::html
