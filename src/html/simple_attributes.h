// The attributes that a simple page keeps.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "html/html_tokenizer.h"
#include "html/simple_sizes.h"

namespace quillcast::html {

enum class Spans : std::uint8_t { kFew, kMany };  // over how many columns and rows a cell may go

// 0xRRGGBB as styles and attributes have it.
std::string ColourInWords(std::uint32_t colour);

// What an element has to be told of what it stands in, since the view would not know it.
struct Told {
  std::string ground = {};       // as a style has it
  std::string letters = {};      // their colour, where it says that it is that of what is around it
  std::string size = {};         // of its letters
  double points = kUsualPoints;  // that "em" is in it
};

// What says it of an element that has no attributes. The view hears the ground of a table as an attribute, that of
// others as a style.
std::string ToldAttributes(std::string_view written, const Told& told);

// Those of a start tag that say how it looks and cannot load or delay anything, each with a blank before it and its
// value in quotes, as they stand in what is `written` for it; addresses of "http", "https", "mailto" and "tel" for a
// link, of "cid" for a picture.
std::string SimpleAttributes(const HtmlTokenizer& page, const HtmlToken& tag, std::string_view written,
                             const Told& told = {}, Spans spans = Spans::kFew);

// Whether it makes a cell go over more than a few.
bool IsLongSpan(const HtmlTokenizer& page, const HtmlAttribute& attribute);

}  // namespace quillcast::html
