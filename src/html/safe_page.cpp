#include "html/safe_page.h"

#include <algorithm>
#include <array>

#include "html/html_elements.h"
#include "html/html_tokenizer.h"
#include "html/safe_css.h"
#include "html/shown_tokens.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// The elements and attributes that are kept, in their order for a search; "style", "title", "href", "src" and
// "background" have rules of their own.
constexpr auto kSafeElements = std::to_array<std::string_view>(
    {"a",          "abbr",    "acronym", "address", "article", "aside",   "b",     "bdi",  "bdo",    "big",
     "blockquote", "body",    "br",      "button",  "caption", "center",  "cite",  "code", "col",    "colgroup",
     "dd",         "del",     "details", "dfn",     "dir",     "div",     "dl",    "dt",   "em",     "fieldset",
     "figcaption", "figure",  "font",    "footer",  "h1",      "h2",      "h3",    "h4",   "h5",     "h6",
     "head",       "header",  "hr",      "html",    "i",       "img",     "ins",   "kbd",  "label",  "legend",
     "li",         "main",    "mark",    "menu",    "nav",     "nobr",    "ol",    "p",    "pre",    "q",
     "rp",         "rt",      "ruby",    "s",       "samp",    "section", "small", "span", "strike", "strong",
     "sub",        "summary", "sup",     "table",   "tbody",   "td",      "tfoot", "th",   "thead",  "time",
     "tr",         "tt",      "u",       "ul",      "var",     "wbr"});
// Their content is no markup, and goes with them.
constexpr auto kDropped = std::to_array<std::string_view>({"iframe", "noembed", "noframes", "script", "textarea"});
constexpr auto kSafeAttributes = std::to_array<std::string_view>(
    {"abbr",   "align",   "alink",  "alt",     "bgcolor",  "border",  "cellpadding", "cellspacing", "class",
     "clear",  "color",   "cols",   "colspan", "datetime", "dir",     "face",        "height",      "hidden",
     "hspace", "id",      "lang",   "link",    "name",     "noshade", "nowrap",      "open",        "reversed",
     "rows",   "rowspan", "rules",  "scope",   "size",     "span",    "start",       "summary",     "text",
     "title",  "type",    "valign", "value",   "vlink",    "vspace",  "width"});

template <std::size_t kSize>
bool IsListed(const std::array<std::string_view, kSize>& names, std::string_view name) {
  return std::ranges::binary_search(names, name);
}
static_assert(std::ranges::is_sorted(kSafeElements) && std::ranges::is_sorted(kDropped) &&
              std::ranges::is_sorted(kSafeAttributes));

constexpr std::string_view kCharset = "<meta charset=\"utf-8\">";
constexpr std::string_view kPolicy =
    "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src 'self' file: data:; "
    "style-src 'unsafe-inline'\">";

// What is not kept says nothing any more of whether it is displayed.
bool IsLeftOut(std::string_view name) { return name != "style" && !IsListed(kSafeElements, name); }

class Copy {
 public:
  Copy(std::string_view page, const SafePageOptions& options) : tokenizer_(page), options_(options) {
    out_.reserve(page.size() + kPolicy.size());
  }

  std::string Run() {
    HtmlToken token;
    while (shown_.Next(token)) Take(token);
    AddHead();
    return std::move(out_);
  }

 private:
  void Take(const HtmlToken& token) {
    switch (token.kind) {
      case HtmlTokenKind::kStartTag:
        return Start(token);
      case HtmlTokenKind::kEndTag:
        return End(token.name);
      case HtmlTokenKind::kText:
        return AddText(tokenizer_.Source(token), false);
      case HtmlTokenKind::kRawText:
        return AddText(tokenizer_.Source(token), true);
      case HtmlTokenKind::kDoctype:
        if (out_.empty()) out_ += "<!DOCTYPE html>";
        return;
      case HtmlTokenKind::kComment:
        return;
    }
  }

  void Start(const HtmlToken& token) {
    special_.clear();
    if (token.name == "style" || token.name == "title" || IsListed(kDropped, token.name)) {
      special_ = token.name;
    } else if (IsListed(kSafeElements, token.name)) {
      AddTag(token);
    } else if (is_in_paragraph_ && IsBlock(RoleOf(token.name))) {
      End("p");
    }
  }

  void End(const std::string& name) {
    special_.clear();
    if (!IsListed(kSafeElements, name) || HasNoContent(name)) return;
    if (IsBlock(RoleOf(name))) is_in_paragraph_ = false;
    AddHead();
    out_.append("</").append(name) += '>';
  }

  void AddText(std::string_view text, bool is_raw) {
    if (IsListed(kDropped, special_) || (is_before_head_ && platform::Trim(text).empty())) return;
    AddHead();
    if (special_ == "style") {
      const std::string css = SafeCss(text);
      if (!css.empty()) out_.append("<style>").append(css) += "</style>";
      return;
    }
    const std::string escaped = EscapedForHtml(is_raw ? text : DecodeCharacterReferences(text));
    out_ += special_ == "title" ? "<title>" + escaped + "</title>" : escaped;
  }

  void AddTag(const HtmlToken& token) {
    if (token.name != "html" && token.name != "head") AddHead();
    if (IsBlock(RoleOf(token.name))) is_in_paragraph_ = token.name == "p";
    out_.append("<").append(token.name);
    for (const HtmlAttribute& attribute : token.attributes) AddAttribute(token.name, attribute);
    out_ += '>';
    if (token.name == "head" && is_before_head_) AddMarks();
  }

  void AddAttribute(std::string_view element, const HtmlAttribute& attribute) {
    const std::string name = platform::AsciiLower(tokenizer_.RawName(attribute));
    std::string value = DecodeCharacterReferences(tokenizer_.RawValue(attribute), true);
    if (name == "style") {
      value = SafeCss(value);
    } else if ((name == "src" && element == "img") || name == "background") {
      const auto place = options_.picture && !value.empty() ? options_.picture(value) : std::nullopt;
      if (!place) return;
      value = *place;
    } else if (name == "href") {
      if (element != "a" || !MayBeFollowed(value)) return;
    } else if (!IsListed(kSafeAttributes, name)) {
      return;
    }
    out_.append(" ").append(name).append("=\"").append(EscapedForHtml(value)) += '"';
  }

  // What says how the page is to be read comes before anything that is read.
  void AddHead() {
    if (!is_before_head_) return;
    out_ += "<head>";
    AddMarks();
    out_ += "</head>";
  }

  void AddMarks() {
    is_before_head_ = false;
    out_ += kCharset;
    if (options_.forbids_loading) out_ += kPolicy;
  }

  HtmlTokenizer tokenizer_;
  ShownTokens shown_{tokenizer_, IsLeftOut};
  const SafePageOptions& options_;
  std::string out_;
  bool is_before_head_ = true;
  bool is_in_paragraph_ = false;  // which a block ends
  std::string special_;           // the element whose text comes, where that is treated in a way of its own
};

}  // namespace

std::string SafePage(std::string_view page, const SafePageOptions& options) { return Copy(page, options).Run(); }

// Readers of addresses pass over blanks and control characters in a scheme.
bool MayBeFollowed(std::string_view address) {
  std::string scheme;
  for (const char c : address.substr(0, 100)) {
    if (static_cast<unsigned char>(c) > ' ') scheme += platform::AsciiLower(c);
  }
  constexpr std::array kSchemes = {"http://", "https://", "mailto:", "ftp://", "tel:", "#"};
  return std::ranges::any_of(kSchemes, [&](const char* begin) { return scheme.starts_with(begin); });
}

std::string PageOfText(std::string_view text) {
  std::string page = "<!DOCTYPE html>\r\n<html><head>";
  page += kCharset;
  page += "</head><body><pre style=\"white-space: pre-wrap\">\r\n";
  page += EscapedForHtml(text);
  page += "</pre></body></html>";
  return page;
}

std::string EscapedForHtml(std::string_view text, std::string_view characters) {
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    if (characters.find(c) == std::string_view::npos) {
      out += c;
    } else {
      out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '"' ? "&quot;" : "&#39;";
    }
  }
  return out;
}

}  // namespace quillcast::html
