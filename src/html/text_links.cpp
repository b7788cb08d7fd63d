#include "html/text_links.h"

#include <utility>

#include "html/html_link.h"

namespace quillcast::html {

void TextLinks::Open(const HtmlToken& token) {
  std::string target = ReadableTarget(tokenizer_.Value(token, "href"));
  if (target == target_ && IsEmpty()) is_open_ = false;
  Close();
  target_ = std::move(target);
  is_open_ = !target_.empty();
  size_before_ = layout_.size();
}

void TextLinks::Close() {
  if (!is_open_) return;
  is_open_ = false;
  layout_.EndWord();
  const std::string text = std::exchange(text_, {});
  if (IsEmpty()) {
    if (target_ == shown_target_ || NextLeadsToo()) return;
    layout_.AddText('<' + target_ + '>');
    layout_.EndWord();
  } else if (!SaysTarget(text, target_)) {
    layout_.AppendToLine(" <" + target_ + '>');
  }
  shown_target_ = target_;
}

// Whether the next link leads to the same place, as the headline below a picture. Looks no further than that link, so
// that no part of the source is looked at more than twice.
bool TextLinks::NextLeadsToo() const {
  HtmlTokenizer ahead = tokenizer_;
  HtmlToken token;
  while (ahead.Next(token)) {
    if (token.kind != HtmlTokenKind::kStartTag || (token.name != "a" && token.name != "area")) continue;
    return ReadableTarget(ahead.Value(token, "href")) == target_;
  }
  return false;
}

}  // namespace quillcast::html
