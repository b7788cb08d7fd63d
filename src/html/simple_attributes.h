// The attributes that a simple page keeps.
#pragma once

#include <string>
#include <string_view>

#include "html/html_tokenizer.h"

namespace quillcast::html {

// Those of a start tag that say how it looks and cannot load or delay anything, each with a blank before it and its
// value in quotes, as they stand in what is `written` for it; addresses of "http", "https", "mailto" and "tel" for a
// link, of "cid" for a picture.
std::string SimpleAttributes(const HtmlTokenizer& page, const HtmlToken& tag, std::string_view written);

}  // namespace quillcast::html
