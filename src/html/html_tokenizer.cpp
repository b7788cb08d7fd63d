#include "html/html_tokenizer.h"

#include <algorithm>
#include <array>

#include "html/characters.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

// Elements whose content is text up to their end tag; with `decoded`, text with character references.
struct RawTextElement {
  std::string_view name;
  bool decoded;
};
constexpr std::array kRawTextElements = {
    RawTextElement{"iframe", false}, RawTextElement{"noembed", false}, RawTextElement{"noframes", false},
    RawTextElement{"script", false}, RawTextElement{"style", false},   RawTextElement{"textarea", true},
    RawTextElement{"title", true},   RawTextElement{"xmp", false},     RawTextElement{"plaintext", false},
};

const RawTextElement* FindRawTextElement(std::string_view name) {
  for (const RawTextElement& element : kRawTextElements) {
    if (element.name == name) return &element;
  }
  return nullptr;
}

}  // namespace

std::string_view HtmlTokenizer::RawValue(const HtmlAttribute& attribute) const {
  return html_.substr(attribute.value_begin, attribute.value_end - attribute.value_begin);
}

std::string_view HtmlTokenizer::RawName(const HtmlAttribute& attribute) const {
  return html_.substr(attribute.name_begin, attribute.name_end - attribute.name_begin);
}

const HtmlAttribute* HtmlTokenizer::Find(const HtmlToken& token, std::string_view name) const {
  for (const HtmlAttribute& attribute : token.attributes) {
    if (platform::EqualsIgnoringAsciiCase(RawName(attribute), name)) return &attribute;
  }
  return nullptr;
}

std::string HtmlTokenizer::Value(const HtmlToken& token, std::string_view name) const {
  const HtmlAttribute* const attribute = Find(token, name);
  return attribute == nullptr ? std::string() : DecodeCharacterReferences(RawValue(*attribute), true);
}

bool HtmlTokenizer::Next(HtmlToken& token) {
  token.name.clear();
  token.attributes.clear();
  if (!raw_text_element_.empty()) {
    ReadRawText(token);
    if (token.end > token.begin) return true;
  }
  if (at_ >= html_.size()) return false;
  token.begin = at_;
  StartsMarkup(at_) ? ReadMarkup(token) : ReadText(token);
  at_ = token.end;
  return true;
}

// "<" is markup before a letter, "!", "?" and "/" (the latter not as the last character), else text.
bool HtmlTokenizer::StartsMarkup(std::size_t at) const {
  if (html_[at] != '<' || at + 1 >= html_.size()) return false;
  const char next = html_[at + 1];
  return IsLetter(next) || next == '!' || next == '?' || (next == '/' && at + 2 < html_.size());
}

void HtmlTokenizer::ReadText(HtmlToken& token) {
  token.kind = HtmlTokenKind::kText;
  std::size_t at = token.begin;
  do {
    at = std::min(html_.find('<', at + 1), html_.size());
  } while (at < html_.size() && !StartsMarkup(at));
  token.end = at;
}

void HtmlTokenizer::ReadRawText(HtmlToken& token) {
  const std::string name = std::move(raw_text_element_);
  raw_text_element_.clear();
  token.kind = FindRawTextElement(name)->decoded ? HtmlTokenKind::kText : HtmlTokenKind::kRawText;
  token.begin = at_;
  token.end = html_.size();
  const bool never_ends = name == "plaintext";
  for (std::size_t at = html_.find("</", at_); !never_ends && at < html_.size(); at = html_.find("</", at + 2)) {
    const std::size_t after = at + 2 + name.size();
    if (after >= html_.size()) break;
    if (!platform::EqualsIgnoringAsciiCase(html_.substr(at + 2, name.size()), name)) continue;
    if (!IsSpace(html_[after]) && html_[after] != '/' && html_[after] != '>') continue;
    token.end = at;
    break;
  }
  at_ = token.end;
}

// The offset behind the next terminator, or the end of the source.
std::size_t HtmlTokenizer::AfterNext(std::string_view terminator, std::size_t from) const {
  const std::size_t found = html_.find(terminator, from);
  return found == std::string_view::npos ? html_.size() : found + terminator.size();
}

void HtmlTokenizer::ReadMarkup(HtmlToken& token) {
  const char next = html_[token.begin + 1];
  if (IsLetter(next)) return ReadTag(token, false);
  if (next == '/' && IsLetter(html_[token.begin + 2])) return ReadTag(token, true);
  if (next == '!') return ReadDeclaration(token);
  token.kind = HtmlTokenKind::kComment;  // "<?xml ...>" and "</ ...>"
  token.end = AfterNext(">", token.begin + 2);
}

void HtmlTokenizer::ReadDeclaration(HtmlToken& token) {
  const std::string_view rest = html_.substr(token.begin + 2);
  token.kind = HtmlTokenKind::kComment;
  if (platform::StartsWithIgnoringAsciiCase(rest, "doctype")) token.kind = HtmlTokenKind::kDoctype;
  if (!rest.starts_with("--")) {
    token.end = AfterNext(">", token.begin + 2);
    return;
  }
  // The dashes of "<!-->" and "<!--->" open and close at once.
  for (std::size_t at = token.begin + 2;;) {
    at = html_.find("--", at);
    if (at == std::string_view::npos) break;
    std::size_t after = at + 2;
    const bool bang = at > token.begin + 3 && after < html_.size() && html_[after] == '!';
    if (bang) ++after;
    if (after < html_.size() && html_[after] == '>') {
      token.end = after + 1;
      return;
    }
    ++at;
  }
  token.end = html_.size();
}

void HtmlTokenizer::ReadTag(HtmlToken& token, bool is_end) {
  std::size_t at = token.begin + (is_end ? 2 : 1);
  const std::size_t name_begin = at;
  while (at < html_.size() && !IsSpace(html_[at]) && html_[at] != '/' && html_[at] != '>') ++at;
  token.name = platform::AsciiLower(html_.substr(name_begin, at - name_begin));
  while (at < html_.size() && html_[at] != '>') {
    if (IsSpace(html_[at]) || html_[at] == '/') {
      ++at;
    } else {
      at = ReadAttribute(at, token);
    }
  }
  token.end = std::min(at + 1, html_.size());
  if (at >= html_.size()) {
    token.kind = HtmlTokenKind::kComment;
    token.name.clear();
    token.attributes.clear();
    return;
  }
  token.kind = is_end ? HtmlTokenKind::kEndTag : HtmlTokenKind::kStartTag;
  if (!is_end && HasRawText(token.name)) raw_text_element_ = token.name;
}

// Reads one attribute at a character that is no blank, "/" or ">", and gives the offset behind it.
std::size_t HtmlTokenizer::ReadAttribute(std::size_t at, HtmlToken& token) const {
  HtmlAttribute attribute;
  attribute.name_begin = at++;  // also a "=", which is part of a name in this place
  while (at < html_.size() && !IsSpace(html_[at]) &&
         std::string_view("/>=").find(html_[at]) == std::string_view::npos) {
    ++at;
  }
  attribute.name_end = attribute.value_begin = attribute.value_end = at;
  std::size_t next = at;
  while (next < html_.size() && IsSpace(html_[next])) ++next;
  if (next < html_.size() && html_[next] == '=') {
    at = next + 1;
    while (at < html_.size() && IsSpace(html_[at])) ++at;
    const bool quoted = at < html_.size() && (html_[at] == '"' || html_[at] == '\'');
    attribute.value_begin = quoted ? at + 1 : at;
    if (quoted) {
      attribute.value_end = std::min(html_.find(html_[at], at + 1), html_.size());
      at = std::min(attribute.value_end + 1, html_.size());
    } else {
      while (at < html_.size() && !IsSpace(html_[at]) && html_[at] != '>') ++at;
      attribute.value_end = at;
    }
  }
  if (token.attributes.size() < kMostAttributes) token.attributes.push_back(attribute);
  return at;
}

bool HasRawText(std::string_view name) { return FindRawTextElement(name) != nullptr; }

std::string_view ConditionalContent(std::string_view comment) {
  if (!platform::StartsWithIgnoringAsciiCase(comment, "<!--[if")) return {};
  const std::size_t begin = comment.find("]>");
  if (begin == std::string_view::npos) return {};
  const std::size_t end = std::min(comment.rfind("<!["), comment.rfind("--"));
  return end > begin + 2 ? comment.substr(begin + 2, end - begin - 2) : std::string_view();
}

namespace {

void Visit(std::string_view part, HtmlVisitor& visitor, bool look_into_comments) {
  HtmlTokenizer tokenizer(part);
  HtmlToken token;
  bool in_style = false;
  while (tokenizer.Next(token)) {
    const std::string_view source = tokenizer.Source(token);
    if (token.kind == HtmlTokenKind::kStartTag) visitor.StartTag(tokenizer, token);
    if (token.kind == HtmlTokenKind::kRawText && in_style) visitor.StyleSheet(source);
    if (token.kind == HtmlTokenKind::kComment && look_into_comments) Visit(ConditionalContent(source), visitor, false);
    in_style = token.kind == HtmlTokenKind::kStartTag && token.name == "style";
  }
}

}  // namespace

void VisitTagsAndStyles(std::string_view html, HtmlVisitor& visitor) { Visit(html, visitor, true); }

}  // namespace quillcast::html
