#include "compose/body_source.h"

#include "mime/html_tokenizer.h"

namespace quillcast::compose {

BodySource CutAtBody(std::string_view html) {
  BodySource source;
  std::string_view doctype;
  std::size_t end = html.size();
  mime::HtmlTokenizer tokenizer(html);
  mime::HtmlToken token;
  while (tokenizer.Next(token)) {
    if (token.kind == mime::HtmlTokenKind::kDoctype && doctype.empty()) doctype = tokenizer.Source(token);
    if (token.name != "body") continue;
    if (token.kind == mime::HtmlTokenKind::kEndTag) end = token.begin;
    if (token.kind == mime::HtmlTokenKind::kStartTag && !source.has_body) {
      source.has_body = true;
      source.head = html.substr(0, token.begin);
    }
  }
  if (!source.has_body) {
    source.head = doctype;
    return source;
  }
  source.tail = html.substr(end);
  return source;
}

}  // namespace quillcast::compose
