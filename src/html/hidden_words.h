// Words that their own letters keep out of sight: the line that mailings have for the lists of mail programs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "html/html_tokenizer.h"

namespace quillcast::html {

class HiddenWords {
 public:
  // Each start and end tag that is displayed, in their order.
  void Take(const HtmlTokenizer& page, const HtmlToken& tag);
  // Whether this text, as the page has it, is not seen where it stands: its letters have no size, or one of a pixel, or
  // let all through. In a block, link or element with a class within, which a style sheet may have given others, it is
  // seen. Blanks hold their place.
  bool Hold(std::string_view text) const;

 private:
  struct Letters {
    bool are_too_small = false;
    bool are_transparent = false;
  };
  struct Open {
    std::string name;
    Letters letters;
  };
  static Letters LettersWithin(const HtmlTokenizer& page, const HtmlToken& tag, Letters letters);
  void Start(const HtmlTokenizer& page, const HtmlToken& tag);
  void End(const std::string& name);

  std::vector<Open> open_;  // from one that hides on
};

}  // namespace quillcast::html
