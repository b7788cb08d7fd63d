#include "html/shown_tokens.h"

#include <algorithm>

#include "html/hiding_style.h"
#include "html/html_elements.h"
#include "html/implied_ends.h"

namespace quillcast::html {
namespace {

constexpr std::size_t kMostOpen = 200;

bool IsDrawing(std::string_view name) { return name == "svg" || name == "math"; }

bool IsBlockOrPart(std::string_view name) { return IsBlock(RoleOf(name)) || IsPartOfTable(name); }

}  // namespace

// What is for readers without scripts is in mail what one program is told for its settings. "display" says more than the
// attribute "hidden".
bool ShownTokens::IsHidden(const HtmlToken& token) const {
  if (token.kind != HtmlTokenKind::kStartTag || (names_ != nullptr && !names_(token.name))) return false;
  if (token.name == "template" || token.name == "noscript") return true;
  if (token.attributes.empty()) return false;
  const bool is_marked = page_.Find(token, "hidden") != nullptr;
  if (page_.Find(token, "style") == nullptr) return is_marked;
  const SaidDisplay said = SaidDisplayOf(page_.Value(token, "style"));
  return said.hides || (is_marked && !said.is_shown.value_or(false));
}

bool ShownTokens::Next(HtmlToken& token) {
  while (page_.Next(token)) {
    CountDrawings(token);
    if (!open_.empty() && !EndsBefore(token)) continue;
    if (!IsHidden(token)) return true;
    Open(token);
  }
  return false;
}

void ShownTokens::CountDrawings(const HtmlToken& token) {
  if (!IsDrawing(token.name)) return;
  if (token.kind == HtmlTokenKind::kStartTag && !page_.Source(token).ends_with("/>")) ++drawings_;
  if (token.kind == HtmlTokenKind::kEndTag && drawings_ > 0) --drawings_;
}

void ShownTokens::Open(const HtmlToken& token) {
  const bool is_empty = (drawings_ > 0 || IsDrawing(token.name)) && page_.Source(token).ends_with("/>");
  if (HasNoContent(token.name) || is_empty) return;
  if (open_.size() < kMostOpen) {
    open_.push_back(token.name);
  } else {
    ++too_deep_;
  }
}

// Whether the element that is passed over ended without its end tag.
bool ShownTokens::EndsBefore(const HtmlToken& token) {
  if (token.kind == HtmlTokenKind::kStartTag) return EndsBeforeStart(token);
  return token.kind == HtmlTokenKind::kEndTag && EndsBeforeEnd(token.name);
}

bool ShownTokens::EndsBeforeStart(const HtmlToken& token) {
  if (too_deep_ == 0) {
    for (std::size_t i = open_.size(); i-- > 0;) {
      if (EndsAt(open_[i], token.name)) {
        open_.resize(i);
      } else if (KeepsWithin(open_[i], token.name)) {
        break;
      }
    }
    if (open_.empty()) return true;
  }
  Open(token);
  return false;
}

// The end of an element around it, unless that is one that a block within goes beyond.
bool ShownTokens::EndsBeforeEnd(const std::string& name) {
  if (too_deep_ > 0) return --too_deep_, false;
  for (std::size_t i = open_.size(); i-- > 0;) {
    if (open_[i] == name) return open_.resize(i), false;
    if (open_[i] == "table" && IsPartOfTable(name)) return false;
  }
  const bool ends_all = IsBlockOrPart(name) && name != "p";
  if (HasNoContent(name) || (!ends_all && std::ranges::any_of(open_, IsBlockOrPart))) return false;
  open_.clear();
  return true;
}

}  // namespace quillcast::html
