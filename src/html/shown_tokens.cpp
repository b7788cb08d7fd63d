#include "html/shown_tokens.h"

#include <algorithm>

#include "html/hiding_style.h"

namespace quillcast::html {

// What is for readers without scripts is in mail what one program is told for its settings. "display" says more than
// the attribute "hidden".
bool ShownTokens::IsHidden(const HtmlToken& token) const {
  if (names_ != nullptr && !names_(token.name)) return false;
  if (token.name == "template" || token.name == "noscript" || token.name == "datalist") return true;
  const bool is_closed = token.name == "dialog" && page_.Find(token, "open") == nullptr;
  const bool is_marked = is_closed || page_.Find(token, "hidden") != nullptr;
  if (page_.Find(token, "style") == nullptr) return is_marked;
  const SaidDisplay said = SaidDisplayOf(page_.Value(token, "style"));
  return said.hides || (is_marked && !said.is_shown.value_or(false));
}

bool ShownTokens::Next(HtmlToken& token) {
  while (page_.Next(token)) {
    const bool is_shown = token.kind == HtmlTokenKind::kStartTag ? Start(token)
                          : token.kind == HtmlTokenKind::kEndTag ? End(token)
                                                                 : hidden_.empty();
    if (is_shown) return true;
  }
  return false;
}

bool ShownTokens::Start(const HtmlToken& token) {
  open_.EndBefore(token);
  ForgetEnded();
  const bool hides = IsHidden(token);
  if (!open_.MayHold(page_, token)) return hidden_.empty() && !hides;
  if (hidden_.empty()) open_.ForgetOuter();
  if (hides) hidden_.push_back(open_.size());
  open_.Open(token.name);
  return hidden_.empty();
}

// That of the element itself goes with it. What began in that and goes on may hide by itself. Nor is one shown that
// ends nothing as a wall is around it: whoever leaves out the wall would take it for what is outside.
bool ShownTokens::End(const HtmlToken& token) {
  const OpenElements::Ended ended = open_.End(token.name);
  const bool is_its_own = !hidden_.empty() && ended.place == hidden_.front();
  if (ended.place && !ended.with_inner) {
    auto inner = std::ranges::lower_bound(hidden_, *ended.place);
    if (inner != hidden_.end() && *inner == *ended.place) inner = hidden_.erase(inner);
    std::for_each(inner, hidden_.end(), [](std::size_t& place) { --place; });
  }
  ForgetEnded();
  return hidden_.empty() && !is_its_own && !ended.is_of_wall;
}

void ShownTokens::ForgetEnded() {
  while (!hidden_.empty() && open_.size() <= hidden_.back()) hidden_.pop_back();
}

}  // namespace quillcast::html
