// Elements of HTML that are not displayed, and passing over them.
#pragma once

#include <string>

#include "html/html_tokenizer.h"

namespace quillcast::html {

// Whether a start tag says by itself that its element is not displayed.
bool IsHidden(const HtmlTokenizer& tokenizer, const HtmlToken& token);

// Skips an element that is not displayed, up to its end tag; to the end tag of an element around it when that is
// missing.
class HiddenElement {
 public:
  // Something is being skipped: every token goes to Skip.
  bool active() const { return active_; }
  // At a start tag that IsHidden says yes to.
  void Begin(const HtmlToken& token);
  // True when the token is to be read after all, because the element ended before it.
  bool Skip(const HtmlToken& token);

 private:
  bool active_ = false;
  std::string name_;
  std::size_t depth_ = 0;   // open elements of the name
  std::size_t blocks_ = 0;  // open blocks of other names
};

}  // namespace quillcast::html
