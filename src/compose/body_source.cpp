#include "compose/body_source.h"

#include "mime/html_tokenizer.h"

namespace quillcast::compose {

namespace {

// What a parser puts into the body even behind its end tag.
bool IsContent(const mime::HtmlToken& token, std::string_view text) {
  switch (token.kind) {
    case mime::HtmlTokenKind::kComment:
    case mime::HtmlTokenKind::kDoctype:
      return false;
    case mime::HtmlTokenKind::kEndTag:
      return token.name != "html";
    case mime::HtmlTokenKind::kText:
      return text.find_first_not_of(" \t\r\n\f") != std::string_view::npos;
    case mime::HtmlTokenKind::kRawText:
    case mime::HtmlTokenKind::kStartTag:
      return true;
  }
  return true;
}

}  // namespace

BodySource CutAtBody(std::string_view html) {
  BodySource source;
  std::string_view doctype;
  std::size_t end = html.size();
  mime::HtmlTokenizer tokenizer(html);
  mime::HtmlToken token;
  while (tokenizer.Next(token)) {
    if (token.kind == mime::HtmlTokenKind::kDoctype && doctype.empty()) doctype = tokenizer.Source(token);
    if (token.kind == mime::HtmlTokenKind::kEndTag && token.name == "body") {
      end = token.begin;
    } else if (IsContent(token, tokenizer.Source(token))) {
      end = html.size();
    }
    if (token.kind == mime::HtmlTokenKind::kStartTag && token.name == "body" && !source.has_body) {
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
