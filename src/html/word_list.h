// Lists as word processors write them into HTML: paragraphs that carry their level in a style and their number or
// bullet as text of their own ("mso-list:l0 level2 lfo1", and "mso-list:Ignore" around the sign).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "html/html_tokenizer.h"
#include "html/text_layout.h"

namespace quillcast::html {

// Sees each tag and each text before others do. The layout must outlive it.
class WordList {
 public:
  explicit WordList(TextLayout& layout) : layout_(layout) {}

  // True where nothing else is to be done for the tag: it begins an item or its sign.
  bool Start(const HtmlTokenizer& tokenizer, const HtmlToken& token);
  // True for an end tag within a sign, and for that of an item.
  bool End(const HtmlToken& token);
  // True for the text of a sign.
  bool Text(std::string_view text);

 private:
  void EndItem();
  void EndSign();

  TextLayout& layout_;
  std::size_t level_ = 0;   // of the item that is open, 0 for none
  bool is_marked_ = false;  // its sign stands before it
  bool follows_item_ = false;
  std::size_t sign_depth_ = 0;  // elements that are open within the sign, itself included
  std::string sign_;
};

}  // namespace quillcast::html
