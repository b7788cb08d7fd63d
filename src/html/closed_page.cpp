#include "html/closed_page.h"

#include <algorithm>
#include <array>
#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "html/html_elements.h"
#include "html/html_tokenizer.h"
#include "html/safe_page.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kMostOpen = 500;  // in each other; browsers end there too

// No end tag reaches out of these but those of tables, which reach as far as their own (WHATWG HTML 13.2.4.2).
constexpr auto kWalls =
    std::to_array<std::string_view>({"applet", "caption", "marquee", "object", "table", "td", "template", "th"});
constexpr auto kOfTables =
    std::to_array<std::string_view>({"caption", "table", "tbody", "td", "tfoot", "th", "thead", "tr"});

constexpr std::string_view kEndless = "plaintext";  // nothing ends it

template <typename Names>
bool IsAmong(std::string_view name, const Names& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Nor that of an element of no meaning of its own, as "span", out of these and blocks (13.2.6.4.7).
constexpr auto kFurtherWalls = std::to_array<std::string_view>(
    {"button", "center", "details", "dir", "fieldset", "form", "select", "summary", "textarea", "title", "xmp"});

bool IsWall(std::string_view name) { return IsBlock(RoleOf(name)) || IsAmong(name, kFurtherWalls); }

// The elements that are open, as far as it matters for what follows the page.
class OpenElements {
 public:
  void Start(const std::string& name) {
    if (name == "p" || IsBlock(RoleOf(name)) || name == "hr") {
      has_paragraph_ = name == "p";
      paragraph_ = open_.size();
    }
    if (name == "p" || HasNoContent(name)) return;
    if (open_.size() == kMostOpen) {
      ++beyond_[name];
    } else {
      open_.push_back(name);
    }
  }

  void End(const std::string& name) {
    if (name == "p" || IsBlock(RoleOf(name))) has_paragraph_ = false;
    if (const auto beyond = beyond_.find(name); beyond != beyond_.end() && beyond->second > 0) {
      --beyond->second;
      return;
    }
    const bool is_of_table = IsAmong(name, kOfTables);
    const bool is_plain = !is_of_table && !IsFormatting(name) && !IsWall(name) && !IsAmong(name, kWalls);
    for (std::size_t place = open_.size(); place-- > 0;) {
      if (is_plain && has_paragraph_ && place < paragraph_) return;
      if (open_[place] == name) return Close(place);
      const bool is_wall = is_of_table ? open_[place] == "table" || open_[place] == "template"
                                       : IsAmong(open_[place], kWalls) || (is_plain && IsWall(open_[place]));
      if (is_wall) return;
    }
  }

  std::string EndTags() const {
    std::string out = has_paragraph_ ? "</p>" : "";
    const auto add = [&](const std::string& name) { out.append("</").append(name) += '>'; };
    for (const auto& [name, count] : beyond_) {
      for (std::size_t i = 0; i < count; ++i) add(name);
    }
    std::for_each(open_.rbegin(), open_.rend(), add);
    return out;
  }

 private:
  // A block closes what is open in it; fonts go on behind it (13.2.6.4.7).
  void Close(std::size_t place) {
    const auto begin = open_.begin() + static_cast<std::ptrdiff_t>(place);
    if (!IsFormatting(*begin))
      open_.erase(std::remove_if(begin + 1, open_.end(), std::not_fn(IsFormatting)), open_.end());
    open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(place));
  }

  std::vector<std::string> open_;
  std::unordered_map<std::string, std::size_t> beyond_;
  std::size_t paragraph_ = 0;   // so many are open outside it
  bool has_paragraph_ = false;  // the next block ends it, and so does the end of what it is in
};

// "#ff0000", "ff0000" or "red" as a style has it; empty for what may be more than a colour.
std::string ColourIn(const std::string& value) {
  constexpr std::string_view kLetters = "#0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  if (value.size() > 30 || value.find_first_not_of(kLetters) != std::string::npos) return {};
  if (value.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) return value;
  if (value.size() == 6) return "#" + value;
  if (value.size() != 3) return {};
  return std::string("#0") + value[0] + '0' + value[1] + '0' + value[2];  // as browsers read it (WHATWG HTML 2.3.6)
}

std::string StyleOf(const HtmlTokenizer& page, const HtmlToken& body) {
  std::string style;
  const auto add = [&style](std::string_view name, const std::string& value) {
    if (!value.empty()) style.append(name).append(":").append(value) += ';';
  };
  add("background-color", ColourIn(page.Value(body, "bgcolor")));
  add("color", ColourIn(page.Value(body, "text")));
  std::string picture = page.Value(body, "background");
  std::erase_if(picture, [](char c) { return c == '\n' || c == '\r' || c == '\f'; });
  for (const auto& [sign, escaped] : {std::pair("\"", "%22"), {"'", "%27"}, {"(", "%28"}, {")", "%29"}, {"\\", "%5C"}})
    picture = platform::ReplaceAll(picture, sign, escaped);
  if (!picture.empty()) add("background-image", "url('" + picture + "')");
  return style + page.Value(body, "style");
}

// What a <body> says of its page, as an element that style sheets of letters hardly ever name; empty where it says
// nothing.
std::string BlockOf(const HtmlTokenizer& page, const HtmlToken& body) {
  std::string out;
  const auto add = [&out](std::string_view name, const std::string& value) {
    if (!value.empty()) out.append(" ").append(name).append("=\"").append(EscapedForHtml(value)) += '"';
  };
  for (const char* name : {"class", "id", "dir", "lang"}) add(name, page.Value(body, name));
  if (page.Find(body, "hidden") != nullptr) out += " hidden";
  add("style", StyleOf(page, body));
  return out.empty() ? out : "<article" + out + '>';
}

// A page's own <body> gives what it says to the one that there is (13.2.6.4.7), and its <html> likewise: both would
// reach the pages round it. As a block the body reaches no further than its page.
class OwnBlock {
 public:
  OwnBlock(std::string_view page, const HtmlTokenizer& tokenizer) : page_(page), tokenizer_(tokenizer) {}

  // Whether it was one of their tags, and is replaced.
  bool Replaces(const HtmlToken& token) {
    if (token.kind != HtmlTokenKind::kStartTag && token.kind != HtmlTokenKind::kEndTag) return false;
    const bool is_body = token.name == "body";
    if (!is_body && token.name != "html") return false;
    out_ += page_.substr(done_, token.begin - done_);
    done_ = token.end;
    if (is_body && token.kind == HtmlTokenKind::kStartTag && !had_body_) {
      had_body_ = true;
      const std::string block = BlockOf(tokenizer_, token);
      is_open_ = !block.empty();
      out_ += block;
    }
    return true;
  }
  // The page up to a place.
  std::string UpTo(std::size_t end) {
    return std::move(out_) + std::string(page_.substr(std::min(done_, end), end - std::min(done_, end)));
  }
  bool is_open() const { return is_open_; }

 private:
  std::string_view page_;
  const HtmlTokenizer& tokenizer_;
  std::string out_;
  std::size_t done_ = 0;
  bool had_body_ = false;
  bool is_open_ = false;
};

}  // namespace

std::string ClosedPage(std::string_view page) {
  OpenElements open;
  std::string raw;  // the element whose content is text up to its end tag, where the page is in one
  HtmlTokenizer tokenizer(page);
  OwnBlock own(page, tokenizer);
  HtmlToken token;
  HtmlTokenKind last = HtmlTokenKind::kText;
  while (raw != kEndless && tokenizer.Next(token)) {
    last = token.kind;
    if (own.Replaces(token)) continue;
    if (last == HtmlTokenKind::kStartTag) open.Start(token.name);
    if (last == HtmlTokenKind::kEndTag) open.End(token.name);
    if (last == HtmlTokenKind::kStartTag && HasRawText(token.name)) raw = token.name;
    if (last == HtmlTokenKind::kEndTag) raw.clear();
  }
  const bool is_none = last == HtmlTokenKind::kComment || last == HtmlTokenKind::kDoctype;
  const bool breaks_off = is_none || raw == kEndless;
  std::string out = own.UpTo(breaks_off ? token.begin : page.size());
  if (raw == kEndless) {
    out.append("<pre>").append(EscapedForHtml(page.substr(token.end))) += "</pre>";
  } else if (!raw.empty()) {
    out.append("</").append(raw) += '>';
  } else if (out.ends_with("</")) {  // which is text at the end of a page alone
    out.replace(out.size() - 2, 1, "&lt;");
  }
  open.End(raw);
  return out + open.EndTags() + (own.is_open() ? "</article>" : "");
}

}  // namespace quillcast::html
