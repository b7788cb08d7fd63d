// The attributes that a simple page keeps.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "html/html_tokenizer.h"

namespace quillcast::html {

enum class Spans : std::uint8_t { kFew, kMany };  // over how many columns and rows a cell may go

// What an element that becomes `written` has behind it by its own attributes, as a style has it; empty for nothing.
std::string OwnGround(const HtmlTokenizer& page, const HtmlToken& tag, std::string_view written);

// What says that a ground is behind what is `written`: the view hears it of a table as an attribute, else as a style.
std::string GroundAttribute(std::string_view written, std::string_view ground);

// Those of a start tag that say how it looks and cannot load or delay anything, each with a blank before it and its
// value in quotes, as they stand in what is `written` for it, with the ground of what it stands in where it has to say
// that; addresses of "http", "https", "mailto" and "tel" for a link, of "cid" for a picture.
std::string SimpleAttributes(const HtmlTokenizer& page, const HtmlToken& tag, std::string_view written,
                             std::string_view ground = {}, Spans spans = Spans::kFew);

// Whether it makes a cell go over more than a few.
bool IsLongSpan(const HtmlTokenizer& page, const HtmlAttribute& attribute);

}  // namespace quillcast::html
