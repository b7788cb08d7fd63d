#include "mail_file/body_part.h"

#include "html/html_to_text.h"
#include "html/html_tokenizer.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::uint64_t kLargestEmpty = std::uint64_t{256} << 10;  // bytes; who writes more shows something

bool HasPicture(std::string_view html) {
  html::HtmlTokenizer page(html);
  html::HtmlToken token;
  while (page.Next(token)) {
    if (token.kind == html::HtmlTokenKind::kStartTag && token.name == "img") return true;
  }
  return false;
}

bool HasWord(std::string_view text) {
  constexpr std::string_view kNoBreak = "\u00a0";
  for (;;) {
    text = platform::Trim(text);
    if (!text.starts_with(kNoBreak)) return !text.empty();
    text.remove_prefix(kNoBreak.size());
  }
}

}  // namespace

bool IsTextOrPage(const Part& part) {
  return part.marker == Marker::kBody && (part.type == "text/html" || part.type == "text/plain");
}

bool ShowsSomething(const MailMessage& message, const Part& part) {
  if (!IsTextOrPage(part) || !part.refused.empty()) return false;
  if (part.source.bytes.size() > kLargestEmpty) return true;
  const auto text = message.TextOf(part);
  if (!text) return true;  // reading it will tell
  if (part.type == "text/plain") return HasWord(*text);
  return HasPicture(*text) || HasWord(html::HtmlToText(*text));
}

}  // namespace quillcast::mail_file
