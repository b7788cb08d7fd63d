#include "html/html_elements.h"

#include <algorithm>
#include <array>

namespace quillcast::html {
namespace {

struct ElementRow {
  std::string_view name;
  HtmlRole role;
};
// In the order of the names, for a binary search. What is not here is inline.
constexpr ElementRow kElementRows[] = {
    {"a", HtmlRole::kLink},           {"address", HtmlRole::kLine},     {"area", HtmlRole::kArea},
    {"article", HtmlRole::kLine},     {"aside", HtmlRole::kLine},       {"blockquote", HtmlRole::kQuotation},
    {"body", HtmlRole::kLine},        {"br", HtmlRole::kBreak},         {"caption", HtmlRole::kLine},
    {"center", HtmlRole::kLine},      {"dd", HtmlRole::kDescription},   {"details", HtmlRole::kLine},
    {"dir", HtmlRole::kBulleted},     {"div", HtmlRole::kLine},         {"dl", HtmlRole::kParagraph},
    {"dt", HtmlRole::kLine},          {"fieldset", HtmlRole::kLine},    {"figcaption", HtmlRole::kLine},
    {"figure", HtmlRole::kParagraph}, {"footer", HtmlRole::kLine},      {"form", HtmlRole::kLine},
    {"h1", HtmlRole::kHeading},       {"h2", HtmlRole::kHeading},       {"h3", HtmlRole::kHeading},
    {"h4", HtmlRole::kHeading},       {"h5", HtmlRole::kHeading},       {"h6", HtmlRole::kHeading},
    {"header", HtmlRole::kLine},      {"hr", HtmlRole::kRule},          {"iframe", HtmlRole::kDropped},
    {"img", HtmlRole::kPicture},      {"legend", HtmlRole::kLine},      {"li", HtmlRole::kItem},
    {"main", HtmlRole::kLine},        {"menu", HtmlRole::kBulleted},    {"nav", HtmlRole::kLine},
    {"noembed", HtmlRole::kDropped},  {"noframes", HtmlRole::kDropped}, {"ol", HtmlRole::kNumbered},
    {"p", HtmlRole::kParagraph},      {"pre", HtmlRole::kPreformatted}, {"q", HtmlRole::kQuote},
    {"script", HtmlRole::kDropped},   {"section", HtmlRole::kLine},     {"style", HtmlRole::kDropped},
    {"summary", HtmlRole::kLine},     {"table", HtmlRole::kTable},      {"td", HtmlRole::kCell},
    {"textarea", HtmlRole::kDropped}, {"th", HtmlRole::kCell},          {"title", HtmlRole::kDropped},
    {"tr", HtmlRole::kRow},           {"ul", HtmlRole::kBulleted},
};

static_assert(std::is_sorted(std::begin(kElementRows), std::end(kElementRows),
                             [](const ElementRow& a, const ElementRow& b) { return a.name < b.name; }));

}  // namespace

HtmlRole RoleOf(std::string_view name) {
  const auto* const found =
      std::lower_bound(std::begin(kElementRows), std::end(kElementRows), name,
                       [](const ElementRow& row, std::string_view wanted) { return row.name < wanted; });
  return found != std::end(kElementRows) && found->name == name ? found->role : HtmlRole::kInline;
}

bool IsFormatting(std::string_view name) {
  constexpr std::array<std::string_view, 14> kFormatting = {"a",    "b", "big",   "code",   "em",     "font", "i",
                                                            "nobr", "s", "small", "strike", "strong", "tt",   "u"};
  return std::find(kFormatting.begin(), kFormatting.end(), name) != kFormatting.end();
}

bool IsRowGroup(std::string_view name) { return name == "tbody" || name == "thead" || name == "tfoot"; }

bool HasNoContent(std::string_view name) {
  constexpr auto kVoid = std::to_array<std::string_view>({"area", "base", "basefont", "bgsound", "br", "col", "embed",
                                                          "frame", "hr", "image", "img", "input", "keygen", "link",
                                                          "meta", "param", "source", "track", "wbr"});
  return std::find(kVoid.begin(), kVoid.end(), name) != kVoid.end();
}

}  // namespace quillcast::html
