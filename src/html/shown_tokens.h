// The tokens of a page without those of elements that say by themselves that they are not displayed.
#pragma once

#include <cstddef>
#include <string>

#include "html/html_tokenizer.h"

namespace quillcast::html {

class ShownTokens {
 public:
  // `page` must outlive it.
  explicit ShownTokens(HtmlTokenizer& page) : page_(page) {}

  // The next that is displayed; false at the end. An element that is not is passed over up to its end tag, or to that
  // of an element around it where its own is missing.
  bool Next(HtmlToken& token);

 private:
  void Begin(const HtmlToken& token);
  bool EndsBefore(const HtmlToken& token);

  HtmlTokenizer& page_;
  bool passes_over_ = false;
  // What is passed over:
  std::string name_;
  std::size_t depth_ = 0;   // open elements of the name
  std::size_t blocks_ = 0;  // open blocks of other names
};

}  // namespace quillcast::html
