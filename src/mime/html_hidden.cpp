#include "mime/html_hidden.h"

#include <algorithm>

#include "mime/html_elements.h"
#include "platform/text.h"

namespace quillcast::mime {

bool IsHidden(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  if (token.name == "template") return true;
  if (token.attributes.empty()) return false;
  if (tokenizer.Find(token, "hidden") != nullptr) return true;
  std::string style = platform::AsciiLower(tokenizer.Value(token, "style"));
  std::erase_if(style, [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
  return style.find("display:none") != std::string::npos;
}

void HiddenElement::Begin(const HtmlToken& token) {
  active_ = true;
  name_ = token.name;
  depth_ = 1;
  blocks_ = 0;
}

bool HiddenElement::Skip(const HtmlToken& token) {
  const bool start = token.kind == HtmlTokenKind::kStartTag;
  if (!start && token.kind != HtmlTokenKind::kEndTag) return false;
  const bool block = IsBlock(RoleOf(token.name)) && token.name != "p";
  if (start && name_ == "p" && depth_ == 1 && blocks_ == 0 && (block || token.name == "p"))
    return active_ = false, true;
  if (token.name == name_) {
    depth_ = start ? depth_ + 1 : depth_ - 1;
    active_ = depth_ > 0;
  } else if (block && start) {
    ++blocks_;
  } else if (block && blocks_ > 0) {
    --blocks_;
  } else if (block) {
    return active_ = false, true;
  }
  return false;
}

}  // namespace quillcast::mime
