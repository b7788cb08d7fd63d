// Where a page names what is no picture: what it leads to, and what it loads besides.
#pragma once

#include "html/html_tokenizer.h"
#include "html/picture_addresses.h"

namespace quillcast::html {

// Of a start tag: links, forms, style sheets, scripts, and where a <meta> or a <param> holds an address, in the order
// of the source. Attributes that name pictures, see there, are none of them.
void EachOtherAddressOf(const HtmlTokenizer& page, const HtmlToken& tag, const TakePicture& take);

}  // namespace quillcast::html
