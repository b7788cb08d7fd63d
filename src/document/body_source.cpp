#include "document/body_source.h"

#include <algorithm>
#include <array>
#include <optional>

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

// What a parser leaves in the head before the body's start tag; all else begins the body there. `is_within` a template
// or a title, anything may stand.
bool IsOfHead(const html::HtmlToken& token, std::string_view text, bool is_within) {
  constexpr std::array<std::string_view, 14> kOfHead = {"html",   "head",     "base",  "basefont", "bgsound",
                                                        "link",   "meta",     "title", "noframes", "style",
                                                        "script", "noscript", "body",  "template"};
  const bool is_named = std::find(kOfHead.begin(), kOfHead.end(), token.name) != kOfHead.end();
  switch (token.kind) {
    case html::HtmlTokenKind::kStartTag:
      return is_within || is_named;
    case html::HtmlTokenKind::kEndTag:
      return token.name != "br";
    case html::HtmlTokenKind::kRawText:  // of an element that stands there itself
      return true;
    default:
      return is_within || !IsContent(token, text);
  }
}

// Where the body begins: at its start tag, or at content before it.
class BodyBegin {
 public:
  void Take(const html::HtmlToken& token, std::string_view text) {
    const bool is_start = token.kind == html::HtmlTokenKind::kStartTag;
    if (is_start && token.name == "body" && !has_tag_) {
      has_tag_ = true;
      if (!at_) at_ = token.begin;
    }
    // A parser without scripts leaves a noscript for the content in it, whose tags are then of the body.
    if (!at_ && open_ == 0 && token.name == "noscript")
      noscript_ = is_start ? std::optional(token.begin) : std::nullopt;
    if (!at_ && !IsOfHead(token, text, open_ > 0)) at_ = noscript_.value_or(token.begin);
    if (token.name != "template" && token.name != "title") return;
    if (is_start) ++open_;
    if (token.kind == html::HtmlTokenKind::kEndTag && open_ > 0) --open_;
  }
  bool has_tag() const { return has_tag_; }
  std::size_t at() const { return at_.value_or(0); }

 private:
  bool has_tag_ = false;
  std::optional<std::size_t> at_;
  std::optional<std::size_t> noscript_;  // one that is open in the head
  int open_ = 0;                         // templates and titles
};

}  // namespace

BodySource CutAtBody(std::string_view html) {
  BodySource source;
  std::string_view doctype;
  std::size_t end = html.size();
  BodyBegin begin;
  html::HtmlTokenizer tokenizer(html);
  html::HtmlToken token;
  while (tokenizer.Next(token)) {
    if (token.kind == html::HtmlTokenKind::kDoctype && doctype.empty()) doctype = tokenizer.Source(token);
    if (token.kind == html::HtmlTokenKind::kEndTag && token.name == "body") {
      end = token.begin;
    } else if (IsContent(token, tokenizer.Source(token))) {
      end = html.size();
    }
    begin.Take(token, tokenizer.Source(token));
  }
  source.has_body = begin.has_tag();
  if (!source.has_body) {
    source.head = doctype;
    return source;
  }
  source.head = html.substr(0, begin.at());
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
