// How large letters are in a simple page, whose view reads whole points and pixels alone.
#pragma once

#include <string>

#include "html/html_tokenizer.h"

namespace quillcast::html {

inline constexpr double kUsualPoints = 10;  // of letters of which nothing is said, in the view

struct LetterSize {
  double points = kUsualPoints;
  std::string value = {};  // as a style has it, "12pt" or "15px"; empty where the view has it by itself
};

// Of the letters in an element, by its name, attributes and style, and by the size around it. The view takes headings
// and the like for steps from the usual size: where another is around them, they are given one.
LetterSize SizeWithin(const HtmlTokenizer& page, const HtmlToken& tag, const LetterSize& around);

}  // namespace quillcast::html
