#include "document/body_colours.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <vector>

#include "document/body_style.h"
#include "html/html_tokenizer.h"
#include "html/safe_page.h"
#include "platform/text.h"

namespace quillcast::document {
namespace {

using html::HtmlAttribute;
using html::HtmlToken;
using html::HtmlTokenizer;
using html::HtmlTokenKind;

struct Row {
  std::string BodyColours::*field;
  const char* attribute;
  const char* name;  // null for what is no colour
  BodyBox box;
  std::optional<StyledColour> styled = {};  // what of its style attribute counts before it
};
constexpr auto kRows = std::to_array<Row>({
    {&BodyColours::text, "text", "text colour", BodyBox::kText, StyledColour::kText},
    {&BodyColours::link, "link", "link colour", BodyBox::kLink},
    {&BodyColours::visited, "vlink", "visited link colour", BodyBox::kVisited},
    {&BodyColours::active, "alink", "active link colour", BodyBox::kActive},
    {&BodyColours::background, "bgcolor", "background colour", BodyBox::kBackground, StyledColour::kBackground},
    {&BodyColours::picture, "background", nullptr, {}},
});

bool IsColour(std::string_view text) {
  return text.size() == 7 && text[0] == '#' &&
         text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string_view::npos;
}

// Whether a token can stand before the body without beginning it: the head, and what may be around it.
bool IsBeforeBody(const HtmlTokenizer& page, const HtmlToken& token) {
  constexpr auto kHeadElements = std::to_array<std::string_view>(
      {"html", "head", "title", "meta", "link", "base", "style", "script", "noscript", "template"});
  const bool is_tag = token.kind == HtmlTokenKind::kStartTag || token.kind == HtmlTokenKind::kEndTag;
  if (is_tag) return std::find(kHeadElements.begin(), kHeadElements.end(), token.name) != kHeadElements.end();
  return token.kind != HtmlTokenKind::kText || platform::Trim(page.Source(token)).empty();
}

// The body's start tag; or, where there is none, false with the place where the body begins in `token.begin`.
bool FindBody(std::string_view html, HtmlTokenizer& page, HtmlToken& token) {
  std::size_t begin = html.size();
  bool in_title = false;
  while (page.Next(token)) {
    if (token.kind == HtmlTokenKind::kStartTag && token.name == "body") return true;
    if (begin == html.size() && !in_title && !IsBeforeBody(page, token)) begin = token.begin;
    in_title = token.kind == HtmlTokenKind::kStartTag && token.name == "title";
  }
  token.begin = begin;
  return false;
}

std::string Written(const char* attribute, const std::string& value) {
  return fmt::format("{}=\"{}\"", attribute, html::EscapedForHtml(value));
}

// What takes the place of a part of the source.
struct Change {
  std::size_t begin;
  std::size_t end;
  std::string text;
};

// Behind the attribute, its quotes included.
std::size_t EndOf(std::string_view html, const HtmlAttribute& attribute) {
  const std::size_t at = attribute.value_begin;
  const bool is_quoted = at > attribute.name_end && (html[at - 1] == '"' || html[at - 1] == '\'');
  return attribute.value_end + (is_quoted ? 1 : 0);
}

// The whole attribute, quotes included, by another; for an empty value with the blank before it, unless only that parts
// what stands on either side.
Change Replaced(std::string_view html, const HtmlAttribute& attribute, const char* name, const std::string& value) {
  Change change{attribute.name_begin, EndOf(html, attribute), value.empty() ? std::string() : Written(name, value)};
  const bool is_apart = std::string_view(" \t\r\n\f>/").find(html[change.end]) != std::string_view::npos;
  if (value.empty() && is_apart && html[change.begin - 1] == ' ') --change.begin;
  return change;
}

bool IsNamed(std::string_view html, const HtmlAttribute& attribute, std::string_view name) {
  return platform::EqualsIgnoringAsciiCase(html.substr(attribute.name_begin, attribute.name_end - attribute.name_begin),
                                           name);
}

// Every one of that name goes, for a second one would count then.
void TakeOut(std::string_view html, const HtmlToken& body, const Row& row, std::vector<Change>& changes) {
  for (const HtmlAttribute& attribute : body.attributes) {
    if (IsNamed(html, attribute, row.attribute)) changes.push_back(Replaced(html, attribute, row.attribute, ""));
  }
}

// Behind the tag's last attribute, or behind its name.
std::size_t EndOfAttributes(std::string_view html, const HtmlToken& body) {
  return body.attributes.empty() ? body.begin + 1 + body.name.size() : EndOf(html, body.attributes.back());
}

std::string Apply(std::string_view html, std::vector<Change> changes) {
  std::stable_sort(changes.begin(), changes.end(), [](const auto& a, const auto& b) { return a.begin < b.begin; });
  std::string out;
  std::size_t at = 0;
  for (const Change& change : changes) {
    out += html.substr(at, change.begin - at);
    out += change.text;
    at = change.end;
  }
  out += html.substr(at);
  return out;
}

std::string WithNewBody(std::string_view html, std::size_t at, const BodyColours& chosen) {
  std::string tag = "<body";
  for (const Row& row : kRows) {
    if (!(chosen.*row.field).empty()) tag += ' ' + Written(row.attribute, chosen.*row.field);
  }
  return tag == "<body" ? std::string(html) : Apply(html, {{at, at, tag + '>'}});
}

}  // namespace

BodyColours ReadBodyColours(std::string_view html) {
  BodyColours found;
  HtmlTokenizer page(html);
  HtmlToken token;
  if (!FindBody(html, page, token)) return found;
  const std::string style = page.Value(token, "style");
  for (const Row& row : kRows) {
    const auto styled = row.styled ? StyleColour(style, *row.styled) : std::nullopt;
    found.*row.field = styled ? *styled : page.Value(token, row.attribute);
  }
  return found;
}

Sentence WantedColour() { return "A colour is \"#\" and six digits from 0 to 9 and A to F, as in #1A5276."; }

std::optional<Complaint<BodyBox>> CheckBodyColours(const BodyColours& chosen, const BodyColours& found) {
  for (const Row& row : kRows) {
    const std::string& colour = chosen.*row.field;
    if (row.name == nullptr || colour.empty() || IsColour(colour) || colour == found.*row.field) continue;
    return Complaint<BodyBox>{fmt::format("Please enter a valid {}.", row.name), row.box, WantedColour()};
  }
  return {};
}

std::string WithBodyColours(std::string_view html, const BodyColours& chosen) {
  HtmlTokenizer page(html);
  HtmlToken body;
  if (!FindBody(html, page, body)) return WithNewBody(html, body.begin, chosen);
  std::vector<Change> changes;
  std::string added;
  const std::string old_style = page.Value(body, "style");
  std::string style = old_style;
  for (const Row& row : kRows) {
    const std::string& value = chosen.*row.field;
    const auto styled = row.styled ? StyleColour(style, *row.styled) : std::nullopt;
    if (styled == value) continue;
    if (styled) style = WithStyleColour(style, *row.styled, value);
    const HtmlAttribute* const attribute = page.Find(body, row.attribute);
    if (attribute == nullptr) {
      if (!value.empty()) added += ' ' + Written(row.attribute, value);
    } else if (value.empty()) {
      TakeOut(html, body, row, changes);
    } else if (value != page.Value(body, row.attribute)) {
      changes.push_back(Replaced(html, *attribute, row.attribute, value));
    }
  }
  if (style != old_style) changes.push_back(Replaced(html, *page.Find(body, "style"), "style", style));
  const std::size_t end = EndOfAttributes(html, body);
  if (!added.empty()) changes.push_back({end, end, std::move(added)});
  return Apply(html, std::move(changes));
}

}  // namespace quillcast::document
