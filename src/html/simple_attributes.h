// The attributes that a simple page keeps.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "html/html_tokenizer.h"

namespace quillcast::html {

enum class Spans : std::uint8_t { kFew, kMany };  // over how many columns and rows a cell may go

// Those of a start tag that say how it looks and cannot load or delay anything, each with a blank before it and its
// value in quotes, as they stand in what is `written` for it; addresses of "http", "https", "mailto" and "tel" for a
// link, of "cid" for a picture.
std::string SimpleAttributes(const HtmlTokenizer& page, const HtmlToken& tag, std::string_view written,
                             Spans spans = Spans::kFew);

// Whether it makes a cell go over more than a few.
bool IsLongSpan(const HtmlTokenizer& page, const HtmlAttribute& attribute);

}  // namespace quillcast::html
