#include "html/shown_tokens.h"

#include "html/hiding_style.h"

namespace quillcast::html {

// What is for readers without scripts is in mail what one program is told for its settings. "display" says more than
// the attribute "hidden".
bool ShownTokens::IsHidden(const HtmlToken& token) const {
  if (names_ != nullptr && !names_(token.name)) return false;
  if (token.name == "template" || token.name == "noscript") return true;
  if (token.attributes.empty()) return false;
  const bool is_marked = page_.Find(token, "hidden") != nullptr;
  if (page_.Find(token, "style") == nullptr) return is_marked;
  const SaidDisplay said = SaidDisplayOf(page_.Value(token, "style"));
  return said.hides || (is_marked && !said.is_shown.value_or(false));
}

bool ShownTokens::Next(HtmlToken& token) {
  while (page_.Next(token)) {
    const bool is_shown = token.kind == HtmlTokenKind::kStartTag ? Start(token)
                          : token.kind == HtmlTokenKind::kEndTag ? End(token)
                                                                 : !hidden_;
    if (is_shown) return true;
  }
  return false;
}

bool ShownTokens::Start(const HtmlToken& token) {
  open_.EndBefore(token);
  LookWhetherItEnded();
  const bool begins_here = !hidden_ && IsHidden(token);
  if (!open_.MayHold(page_, token)) return !hidden_ && !begins_here;
  if (!hidden_) open_.ForgetOuter();
  if (begins_here) hidden_ = open_.size();
  open_.Open(token.name);
  return !hidden_;
}

// That of the element itself goes with it.
bool ShownTokens::End(const HtmlToken& token) {
  const OpenElements::Ended ended = open_.End(token.name);
  const bool was_hidden = hidden_.has_value();
  const bool is_its_own = was_hidden && ended.place == hidden_;
  if (was_hidden && ended.place && !ended.with_inner && *ended.place < *hidden_) --*hidden_;
  LookWhetherItEnded();
  if (is_its_own) hidden_.reset();
  return !hidden_ && !is_its_own;
}

void ShownTokens::LookWhetherItEnded() {
  if (hidden_ && open_.size() <= *hidden_) hidden_.reset();
}

}  // namespace quillcast::html
