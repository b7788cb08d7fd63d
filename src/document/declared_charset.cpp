#include "document/declared_charset.h"

#include "charset/page_charset.h"
#include "html/html_tokenizer.h"
#include "platform/text.h"

namespace quillcast::document {
namespace {

using html::HtmlAttribute;
using html::HtmlToken;
using html::HtmlTokenizer;
using html::HtmlTokenKind;

constexpr std::string_view kByteOrderMark = "\uFEFF";

// Of the content of <meta http-equiv=content-type>, "text/html; charset=utf-8", the set: a part of it.
std::string_view CharsetOf(std::string_view content) {
  constexpr std::string_view kParameter = "charset";
  const std::size_t at = platform::AsciiLower(content).find(kParameter);
  if (at == std::string::npos) return {};
  std::string_view rest = platform::Trim(content.substr(at + kParameter.size()));
  if (!rest.starts_with('=')) return {};
  rest = platform::Trim(rest.substr(1));
  if (rest.starts_with('"') || rest.starts_with('\'')) rest.remove_prefix(1);
  return rest.substr(0, rest.find_first_of(" \t\r\n\f;\"'"));
}

// What a meta element names, a part of the source; empty where it names none.
std::string_view CharsetOf(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  if (token.kind != HtmlTokenKind::kStartTag || token.name != "meta") return {};
  const HtmlAttribute* const named = tokenizer.Find(token, "charset");
  if (named != nullptr && !platform::Trim(tokenizer.RawValue(*named)).empty())
    return platform::Trim(tokenizer.RawValue(*named));
  const HtmlAttribute* const content = tokenizer.Find(token, "content");
  const std::string kind = tokenizer.Value(token, "http-equiv");
  return content != nullptr && platform::EqualsIgnoringAsciiCase(platform::Trim(kind), "content-type")
             ? CharsetOf(tokenizer.RawValue(*content))
             : std::string_view();
}

std::string_view FirstCharset(std::string_view html) {
  HtmlTokenizer tokenizer(html);
  HtmlToken token;
  while (tokenizer.Next(token)) {
    if (const std::string_view found = CharsetOf(tokenizer, token); !found.empty()) return found;
  }
  return {};
}

// Of <?xml version="1.0" encoding="utf-8"?>, with nothing before it (XML 1.0 2.8); browsers take it to end at the first
// ">", whatever stands there.
std::string_view CharsetOfXml(std::string_view html) {
  constexpr std::string_view kName = "encoding";
  if (!html.starts_with("<?xml")) return {};
  const std::string_view declaration = html.substr(0, html.find('>'));
  const std::size_t at = declaration.find(kName);
  if (at == std::string_view::npos) return {};
  std::string_view rest = platform::Trim(declaration.substr(at + kName.size()));
  if (!rest.starts_with('=')) return {};
  rest = platform::Trim(rest.substr(1));
  const std::size_t end = rest.empty() ? std::string_view::npos : rest.find(rest.front(), 1);
  return end == std::string_view::npos ? std::string_view() : rest.substr(1, end - 1);
}

// What may stand before the head without being a part of it.
bool IsBeforeHead(const HtmlToken& token, std::string_view source) {
  if (token.kind == HtmlTokenKind::kComment || token.kind == HtmlTokenKind::kDoctype) return true;
  return token.kind == HtmlTokenKind::kText && platform::Trim(source).empty();
}

// Where a browser's parser takes a meta element into the head. Comments stay behind it, so that it is within the first
// kilobyte, where browsers look for it.
std::size_t StartOfHead(std::string_view html) {
  std::size_t at = html.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
  HtmlTokenizer tokenizer(html.substr(at));
  const std::size_t begin = at;
  HtmlToken token;
  while (tokenizer.Next(token)) {
    const std::string_view source = tokenizer.Source(token);
    const bool is_declaration = source.starts_with("<?") || token.kind == HtmlTokenKind::kDoctype;
    const bool opens_page = token.kind == HtmlTokenKind::kStartTag && token.name == "html";
    const bool opens_head = token.kind == HtmlTokenKind::kStartTag && token.name == "head";
    if (is_declaration || opens_page || opens_head) at = begin + token.end;
    if (opens_head || !(opens_page || IsBeforeHead(token, source))) break;
  }
  return at;
}

}  // namespace

std::string DeclaredCharset(std::string_view html) {
  const std::string_view declared = FirstCharset(html);
  return std::string(declared.empty() ? CharsetOfXml(html) : declared);
}

bool IsUtf8Label(std::string_view label) {
  return platform::EqualsIgnoringAsciiCase(label, "utf-8") || platform::EqualsIgnoringAsciiCase(label, "utf8");
}

// Whether what is saved in `encoding` may go on declaring this set.
bool MayDeclare(std::string_view label, BodyEncoding encoding) {
  if (encoding == BodyEncoding::kUtf8) return IsUtf8Label(label);
  return encoding != BodyEncoding::kDeclared || IsUtf8Label(label) || charset::IsPageCharset(label);
}

std::string WithCharset(std::string_view html, BodyEncoding encoding) {
  std::string out(html);
  const std::string_view declared = FirstCharset(html);
  const std::string of_xml(encoding == BodyEncoding::kDeclared ? CharsetOfXml(html) : std::string_view());
  const std::string name = encoding == BodyEncoding::kWindows1252 ? "windows-1252" : of_xml.empty() ? "utf-8" : of_xml;
  if (declared.empty()) {
    out.insert(StartOfHead(html), "<meta charset=\"" + name + "\">");
  } else if (!MayDeclare(declared, encoding)) {
    out.replace(static_cast<std::size_t>(declared.data() - html.data()), declared.size(), "utf-8");
  }
  return out;
}

}  // namespace quillcast::document
