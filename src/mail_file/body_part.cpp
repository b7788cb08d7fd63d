#include "mail_file/body_part.h"

#include <algorithm>
#include <array>

#include "html/html_to_text.h"
#include "html/html_tokenizer.h"
#include "html/shown_tokens.h"
#include "platform/text.h"
#include "platform/unseen_signs.h"
#include "platform/utf8.h"

namespace quillcast::mail_file {
namespace {

constexpr std::uint64_t kLargestEmpty = std::uint64_t{256} << 10;  // bytes; who writes more shows something

// The page without what stands in its text as more than its words: the addresses of links, lines and quotes.
std::string WordsAlone(std::string_view html) {
  constexpr auto kLeftOut = std::to_array<std::string_view>({"a", "area", "hr", "q"});
  std::string out;
  html::HtmlTokenizer page(html);
  html::ShownTokens shown(page);
  html::HtmlToken token;
  while (shown.Next(token)) {
    if (std::ranges::find(kLeftOut, token.name) == kLeftOut.end()) out += page.Source(token);
  }
  return out;
}

// What turns the line, and what chooses the form of the letter before it.
bool HasNoLook(char32_t code) {
  const bool turns = (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
  return turns || (code >= 0x180B && code <= 0x180D) || (code >= 0xFE00 && code <= 0xFE0F);
}

bool HasWord(std::string_view text) {
  while (!text.empty()) {
    const auto [code, length] = platform::DecodeUtf8(text);
    if (!platform::IsBlank(code) && !platform::IsUnseen(code) && !HasNoLook(code)) return true;
    text.remove_prefix(length);
  }
  return false;
}

}  // namespace

bool IsTextOrPage(const Part& part) {
  return part.marker == Marker::kBody && (part.type == "text/html" || part.type == "text/plain");
}

bool ShownParts::Shows(const Part& part) {
  if (!IsTextOrPage(part) || !part.refused.empty()) return false;
  return message_.ShowsSomething(part, [&] { return HasWordOrPicture(part); });
}

bool ShownParts::HasWordOrPicture(const Part& part) {
  if (part.source.bytes.size() > kLargestEmpty) return true;
  const auto text = message_.TextOf(part);
  if (!text) return true;  // reading it will tell
  if (part.type == "text/plain") return HasWord(*text);
  return HasWord(html::HtmlToText(WordsAlone(*text))) || HasPictureOfItsOwn(part, *text);
}

// One of elsewhere is never fetched, and so shows nothing.
bool ShownParts::HasPictureOfItsOwn(const Part& part, std::string_view html) {
  if (platform::AsciiLower(html).find("<img") == std::string::npos) return false;
  if (!embedded_) embedded_.emplace(message_);
  return embedded_->ShowsPicture(part, html);
}

}  // namespace quillcast::mail_file
