#include "html/nesting.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>

#include "html/html_elements.h"
#include "html/html_tokenizer.h"

namespace quillcast::html {
namespace {

// WHATWG HTML 13.1.2.4.
bool MayLackItsEnd(std::string_view name) {
  constexpr auto kOptional =
      std::to_array<std::string_view>({"html", "head", "body", "p", "li", "dt", "dd", "tr", "td", "th", "thead",
                                       "tbody", "tfoot", "colgroup", "caption", "option", "optgroup", "rt", "rp"});
  return std::find(kOptional.begin(), kOptional.end(), name) != kOptional.end();
}

}  // namespace

bool IsNestedDeeperThan(std::string_view html, std::size_t levels) {
  std::unordered_map<std::string, std::size_t> open;
  std::size_t depth = 0;
  HtmlTokenizer page(html);
  HtmlToken token;
  while (page.Next(token)) {
    if (token.kind == HtmlTokenKind::kStartTag && !HasNoContent(token.name) && !MayLackItsEnd(token.name)) {
      ++open[token.name];
      if (++depth > levels) return true;
    } else if (token.kind == HtmlTokenKind::kEndTag) {
      const auto found = open.find(token.name);  // what closes nothing that is open takes nothing away
      if (found == open.end() || found->second == 0) continue;
      --found->second;
      --depth;
    }
  }
  return false;
}

}  // namespace quillcast::html
