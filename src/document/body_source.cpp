#include "document/body_source.h"

#include "html/html_tokenizer.h"
#include "html/nesting.h"

namespace quillcast::document {

namespace {

// What a parser puts into the body even behind its end tag.
bool IsContent(const html::HtmlToken& token, std::string_view text) {
  switch (token.kind) {
    case html::HtmlTokenKind::kComment:
    case html::HtmlTokenKind::kDoctype:
      return false;
    case html::HtmlTokenKind::kEndTag:
      return token.name != "html";
    case html::HtmlTokenKind::kText:
      return text.find_first_not_of(" \t\r\n\f") != std::string_view::npos;
    case html::HtmlTokenKind::kRawText:
    case html::HtmlTokenKind::kStartTag:
      return true;
  }
  return true;
}

}  // namespace

BodySource CutAtBody(std::string_view html) {
  BodySource source;
  std::string_view doctype;
  std::size_t end = html.size();
  html::HtmlTokenizer tokenizer(html);
  html::HtmlToken token;
  while (tokenizer.Next(token)) {
    if (token.kind == html::HtmlTokenKind::kDoctype && doctype.empty()) doctype = tokenizer.Source(token);
    if (token.kind == html::HtmlTokenKind::kEndTag && token.name == "body") {
      end = token.begin;
    } else if (IsContent(token, tokenizer.Source(token))) {
      end = html.size();
    }
    if (token.kind == html::HtmlTokenKind::kStartTag && token.name == "body" && !source.has_body) {
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

Result<void> CheckEditable(std::string_view html) {
  constexpr std::size_t kDeepest = 5000;  // takes the engine a second or two
  if (!html::IsNestedDeeperThan(html, kDeepest)) return {};
  return Error{
      Failure::kBadData,
      Say("More than {} elements of the document stand in each other, which the editor cannot show.", kDeepest),
      "Close what its tags leave open, or take them out."};
}

}  // namespace quillcast::document
