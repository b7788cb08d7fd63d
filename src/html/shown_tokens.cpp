#include "html/shown_tokens.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "html/html_elements.h"
#include "html/safe_css.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// What a declaration says where it keeps an element out of sight. "max-height:0" is how previews are kept so where
// "display" is not obeyed.
struct Hiding {
  std::string_view property;
  std::array<std::string_view, 2> values;
};
constexpr std::array kHiding = {
    Hiding{"display", {"none"}},
    Hiding{"visibility", {"hidden"}},
    Hiding{"opacity", {"0"}},
    Hiding{"max-height", {"0", "0px"}},
};

// Of several declarations of a property the last counts, and one that is marked as important before others.
class Said {
 public:
  void Take(std::string_view declaration) {
    const std::size_t colon = declaration.find(':');
    if (colon == std::string_view::npos) return;
    const std::string_view property = platform::Trim(declaration.substr(0, colon));
    const auto is_it = [&](const Hiding& row) { return platform::EqualsIgnoringAsciiCase(property, row.property); };
    const auto row = std::ranges::find_if(kHiding, is_it);
    if (row == kHiding.end()) return;
    const std::size_t mark = std::min(declaration.find('!', colon), declaration.size());
    const std::string_view value = platform::Trim(declaration.substr(colon + 1, mark - colon - 1));
    auto& [hides, is_important] = by_property_.at(static_cast<std::size_t>(row - kHiding.begin()));
    const bool has_mark = mark < declaration.size();
    if (is_important && !has_mark) return;
    is_important = has_mark;
    hides = std::ranges::any_of(row->values, [&](std::string_view hiding) {
      return !value.empty() && platform::EqualsIgnoringAsciiCase(value, hiding);
    });
  }
  bool Hides() const {
    return std::ranges::any_of(by_property_, [](const One& one) { return one.hides; });
  }

 private:
  struct One {
    bool hides = false;
    bool is_important = false;
  };
  std::array<One, kHiding.size()> by_property_;
};

bool IsHidden(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  if (token.name == "template" || token.name == "noscript") return true;
  if (token.attributes.empty()) return false;
  if (tokenizer.Find(token, "hidden") != nullptr) return true;
  if (tokenizer.Find(token, "style") == nullptr) return false;
  const std::string style = WithoutComments(tokenizer.Value(token, "style"));
  Said said;
  for (std::string_view rest = style; !rest.empty();) {
    const std::size_t end = std::min(rest.find(';'), rest.size());
    said.Take(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return said.Hides();
}

}  // namespace

bool ShownTokens::Next(HtmlToken& token) {
  while (page_.Next(token)) {
    if (passes_over_ && !EndsBefore(token)) continue;
    if (token.kind != HtmlTokenKind::kStartTag || !IsHidden(page_, token)) return true;
    if (!HasNoContent(token.name)) Begin(token);
  }
  return false;
}

void ShownTokens::Begin(const HtmlToken& token) {
  passes_over_ = true;
  name_ = token.name;
  depth_ = 1;
  blocks_ = 0;
}

// Whether the element that is passed over ended without its end tag.
bool ShownTokens::EndsBefore(const HtmlToken& token) {
  const bool start = token.kind == HtmlTokenKind::kStartTag;
  if (!start && token.kind != HtmlTokenKind::kEndTag) return false;
  const bool block = IsBlock(RoleOf(token.name)) && token.name != "p";
  if (start && name_ == "p" && depth_ == 1 && blocks_ == 0 && (block || token.name == "p"))
    return passes_over_ = false, true;
  if (token.name == name_) {
    depth_ = start ? depth_ + 1 : depth_ - 1;
    passes_over_ = depth_ > 0;
  } else if (block && start) {
    ++blocks_;
  } else if (block && blocks_ > 0) {
    --blocks_;
  } else if (block) {
    return passes_over_ = false, true;
  }
  return false;
}

}  // namespace quillcast::html
