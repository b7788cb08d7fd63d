#include "html/closed_page.h"

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "html/html_elements.h"
#include "html/html_tokenizer.h"
#include "html/old_colour.h"
#include "html/safe_page.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kMostOpenToClose = 500;  // in each other; browsers end there too

// No end tag reaches out of these but those of tables, which reach as far as their own (WHATWG HTML 13.2.4.2).
constexpr auto kWallElements =
    std::to_array<std::string_view>({"applet", "caption", "marquee", "object", "table", "td", "template", "th"});
constexpr auto kOfTables =
    std::to_array<std::string_view>({"caption", "table", "tbody", "td", "tfoot", "th", "thead", "tr"});

constexpr std::string_view kEndless = "plaintext";  // nothing ends it

// Nor that of an element of no meaning of its own, as "span", out of these and blocks (13.2.6.4.7).
constexpr auto kFurtherWalls = std::to_array<std::string_view>(
    {"button", "center", "details", "dir", "fieldset", "form", "select", "summary", "textarea", "title", "xmp"});

bool IsWall(std::string_view name) { return IsBlock(RoleOf(name)) || IsAmong(name, kFurtherWalls); }

// The elements that are open, as far as it matters for what follows the page.
class ElementsToClose {
 public:
  void Start(const std::string& name) {
    if (name == "p" || IsBlock(RoleOf(name)) || name == "hr") {
      has_paragraph_ = name == "p";
      paragraph_ = open_.size();
    }
    if (name == "p" || HasNoContent(name)) return;
    if (open_.size() == kMostOpenToClose) {
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
    const bool is_plain = !is_of_table && !IsFormatting(name) && !IsWall(name) && !IsAmong(name, kWallElements);
    for (std::size_t place = open_.size(); place-- > 0;) {
      if (is_plain && has_paragraph_ && place < paragraph_) return;
      if (open_[place] == name) return Close(place);
      const bool is_wall = is_of_table ? open_[place] == "table" || open_[place] == "template"
                                       : IsAmong(open_[place], kWallElements) || (is_plain && IsWall(open_[place]));
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

// What a page says of the whole of itself. Its <body> gives what it says to the one that there is, as each further one
// does where the first says nothing (13.2.6.4.7), and its <html> likewise: all would reach the pages round it. As a
// block they reach no further than their page.
class OwnBlock {
 public:
  OwnBlock(std::string_view page, const HtmlTokenizer& tokenizer) : page_(page), tokenizer_(tokenizer) {}

  // Whether it was one of their tags, and is taken out.
  bool Takes(const HtmlToken& token) {
    if (token.kind != HtmlTokenKind::kStartTag && token.kind != HtmlTokenKind::kEndTag) return false;
    if (token.name != "body" && token.name != "html" && token.name != "head") return false;
    out_ += page_.substr(done_, token.begin - done_);
    done_ = token.end;
    if (token.kind == HtmlTokenKind::kStartTag) Hear(token);
    return true;
  }

  // The page up to a place, without them.
  std::string UpTo(std::size_t end) const {
    return out_ + std::string(page_.substr(std::min(done_, end), end - std::min(done_, end)));
  }

  // An element that style sheets of letters hardly ever name, round what stands in the page: also before its <body>, as
  // what is open there would end in it. A picture behind all of it has to be an attribute: styles of strangers show
  // none.
  std::string Round(const std::string& page) const {
    std::string out;
    const auto add = [&out](std::string_view name, const std::string& value) {
      if (!value.empty()) out.append(" ").append(name).append("=\"").append(EscapedForHtml(value)) += '"';
    };
    for (const char* name : {"class", "id", "dir", "lang"})
      add(name, Of(name).empty() ? In(said_outside_, name) : Of(name));
    if (said_.count("hidden") + said_outside_.count("hidden") > 0) out += " hidden";
    add("style", Style());
    std::string ground;
    if (const std::string picture = Of("background"); !picture.empty())
      ground = "<table width=\"100%\" background=\"" + EscapedForHtml(picture) + "\"><tr><td>";
    if (out.empty() && ground.empty()) return page;
    return "<article" + out + '>' + ground + page + (ground.empty() ? "" : "</td></tr></table>") + "</article>";
  }

 private:
  void Hear(const HtmlToken& token) {
    if (token.name == "body") {
      for (const char* name : {"class", "id", "dir", "lang", "hidden", "bgcolor", "text", "background", "style"})
        Keep(token, name, said_);
    } else if (token.name == "html") {
      for (const char* name : {"dir", "lang", "hidden", "style"}) Keep(token, name, said_outside_);
    }
  }
  using Said = std::map<std::string, std::string>;
  void Keep(const HtmlToken& token, const char* name, Said& said) const {
    if (tokenizer_.Find(token, name) != nullptr) said.try_emplace(name, tokenizer_.Value(token, name));
  }
  static std::string In(const Said& said, const char* name) {
    const auto found = said.find(name);
    return found == said.end() ? std::string() : found->second;
  }
  std::string Of(const char* name) const { return In(said_, name); }
  std::string Style() const {
    std::string style = In(said_outside_, "style");
    if (!style.empty()) style += ';';
    if (const auto ground = OldColour(Of("bgcolor")); !ground.empty()) style += "background-color:" + ground + ';';
    if (const auto colour = OldColour(Of("text")); !colour.empty()) style += "color:" + colour + ';';
    return style + Of("style");
  }

  std::string_view page_;
  const HtmlTokenizer& tokenizer_;
  std::string out_;
  std::size_t done_ = 0;
  Said said_;
  Said said_outside_;  // by its <html>
};

}  // namespace

std::string ClosedPage(std::string_view page) {
  ElementsToClose open;
  std::string raw;  // the element whose content is text up to its end tag, where the page is in one
  HtmlTokenizer tokenizer(page);
  OwnBlock own(page, tokenizer);
  HtmlToken token;
  HtmlTokenKind last = HtmlTokenKind::kText;
  while (raw != kEndless && tokenizer.Next(token)) {
    last = token.kind;
    if (own.Takes(token)) continue;
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
  return own.Round(out + open.EndTags());
}

}  // namespace quillcast::html
