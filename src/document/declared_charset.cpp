#include "document/declared_charset.h"

#include "html/html_tokenizer.h"
#include "platform/text.h"

namespace quillcast::document {
namespace {

using html::HtmlToken;
using html::HtmlTokenizer;
using html::HtmlTokenKind;

constexpr std::string_view kByteOrderMark = "\uFEFF";

// The content of <meta http-equiv=content-type>: "text/html; charset=utf-8".
bool NamesCharset(std::string_view content) {
  constexpr std::string_view kParameter = "charset";
  const std::string lower = platform::AsciiLower(content);
  const std::size_t at = lower.find(kParameter);
  if (at == std::string::npos) return false;
  const std::string_view rest = platform::Trim(std::string_view(lower).substr(at + kParameter.size()));
  return rest.starts_with('=') && !platform::Trim(rest.substr(1)).empty();
}

bool DeclaresCharset(const HtmlTokenizer& tokenizer, const HtmlToken& token) {
  if (token.kind != HtmlTokenKind::kStartTag || token.name != "meta") return false;
  if (!platform::Trim(tokenizer.Value(token, "charset")).empty()) return true;
  return platform::EqualsIgnoringAsciiCase(platform::Trim(tokenizer.Value(token, "http-equiv")), "content-type") &&
         NamesCharset(tokenizer.Value(token, "content"));
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

bool DeclaresCharset(std::string_view html) {
  HtmlTokenizer tokenizer(html);
  HtmlToken token;
  while (tokenizer.Next(token)) {
    if (DeclaresCharset(tokenizer, token)) return true;
  }
  return false;
}

std::string WithCharset(std::string_view html, BodyEncoding encoding) {
  std::string out(html);
  if (DeclaresCharset(html)) return out;
  const char* const name = encoding == BodyEncoding::kWindows1252 ? "windows-1252" : "utf-8";
  out.insert(StartOfHead(html), std::string("<meta charset=\"") + name + "\">");
  return out;
}

}  // namespace quillcast::document
