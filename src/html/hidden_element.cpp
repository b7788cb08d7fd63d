#include "html/hidden_element.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "html/html_elements.h"
#include "platform/text.h"

namespace quillcast::html {

namespace {

struct Declaration {
  std::string_view property;
  std::string_view value;
};
// "max-height:0" is how previews are kept out of sight where "display" is not obeyed.
constexpr std::array kHiding = {
    Declaration{"display", "none"}, Declaration{"visibility", "hidden"}, Declaration{"opacity", "0"},
    Declaration{"max-height", "0"}, Declaration{"max-height", "0px"},
};

bool Hides(std::string_view declaration) {
  const std::size_t colon = declaration.find(':');
  if (colon == std::string_view::npos) return false;
  const std::string_view property = platform::Trim(declaration.substr(0, colon));
  const std::string_view value = platform::Trim(declaration.substr(colon + 1, declaration.find('!') - colon - 1));
  return std::any_of(kHiding.begin(), kHiding.end(), [&](const Declaration& row) {
    return platform::EqualsIgnoringAsciiCase(property, row.property) &&
           platform::EqualsIgnoringAsciiCase(value, row.value);
  });
}

}  // namespace

bool IsHidden(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  if (token.name == "template" || token.name == "noscript") return true;
  if (token.attributes.empty()) return false;
  if (tokenizer.Find(token, "hidden") != nullptr) return true;
  if (tokenizer.Find(token, "style") == nullptr) return false;
  const std::string style = tokenizer.Value(token, "style");
  for (std::string_view rest = style; !rest.empty();) {
    const std::size_t end = std::min(rest.find(';'), rest.size());
    if (Hides(rest.substr(0, end))) return true;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return false;
}

void HiddenElement::Begin(const HtmlToken& token) {
  active_ = true;
  name_ = token.name;
  depth_ = 1;
  blocks_ = 0;
}

bool HiddenElement::Skip(const HtmlToken& token) {
  const bool start = token.kind == HtmlTokenKind::kStartTag;
  if (!start && token.kind != HtmlTokenKind::kEndTag) return false;
  const bool block = IsBlock(RoleOf(token.name)) && token.name != "p";
  if (start && name_ == "p" && depth_ == 1 && blocks_ == 0 && (block || token.name == "p"))
    return active_ = false, true;
  if (token.name == name_) {
    depth_ = start ? depth_ + 1 : depth_ - 1;
    active_ = depth_ > 0;
  } else if (block && start) {
    ++blocks_;
  } else if (block && blocks_ > 0) {
    --blocks_;
  } else if (block) {
    return active_ = false, true;
  }
  return false;
}

}  // namespace quillcast::html
