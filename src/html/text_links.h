// The links of a page in its plain text: each target once, behind the words that lead there.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "html/html_tokenizer.h"
#include "html/text_layout.h"

namespace quillcast::html {

// Writes targets only; what a link holds goes to the layout by other ways, and is told to it by Text. Both arguments
// must outlive it.
class TextLinks {
 public:
  TextLinks(const HtmlTokenizer& tokenizer, TextLayout& layout) : tokenizer_(tokenizer), layout_(layout) {}

  // At the start tag of a link, which ends one that is open.
  void Open(const HtmlToken& token);
  void Text(std::string_view text) {
    if (is_open_) text_ += text;
  }
  // At its end tag, and at the end of the page.
  void Close();

 private:
  bool IsEmpty() const { return layout_.size() == size_before_; }
  bool NextLeadsToo() const;

  const HtmlTokenizer& tokenizer_;
  TextLayout& layout_;
  std::string target_;
  std::string text_;
  std::string shown_target_;  // the last one
  std::size_t size_before_ = 0;
  bool is_open_ = false;
};

}  // namespace quillcast::html
