#include "mail_file/body_part.h"

#include <algorithm>
#include <array>
#include <optional>

#include "html/html_to_text.h"
#include "html/html_tokenizer.h"
#include "mail_file/part_addresses.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::uint64_t kLargestEmpty = std::uint64_t{256} << 10;  // bytes; who writes more shows something

// One of elsewhere is never fetched, and so shows nothing.
bool HasPictureOfItsOwn(const MailMessage& message, const Part& part, std::string_view html) {
  const auto place = static_cast<std::size_t>(&part - message.parts().data());
  std::optional<PartAddresses> addresses;
  html::HtmlTokenizer page(html);
  html::HtmlToken token;
  while (page.Next(token)) {
    if (token.kind != html::HtmlTokenKind::kStartTag || token.name != "img") continue;
    const std::string address = page.Value(token, "src");
    if (platform::AsciiLower(platform::Trim(address).substr(0, 5)) == "data:") return true;
    if (!addresses) addresses.emplace(message.parts());
    if (addresses->Find(place, addresses->BaseOf(place), address) != kNoPart) return true;
  }
  return false;
}

bool HasWord(std::string_view text) {
  constexpr auto kUnseen =
      std::to_array<std::string_view>({"\u00a0", "\u00ad", "\u200b", "\u200c", "\u200d", "\ufeff"});
  for (;;) {
    text = platform::Trim(text);
    const auto* unseen = std::ranges::find_if(kUnseen, [&](std::string_view sign) { return text.starts_with(sign); });
    if (unseen == kUnseen.end()) return !text.empty();
    text.remove_prefix(unseen->size());
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
  return HasWord(html::HtmlToText(*text)) || HasPictureOfItsOwn(message, part, *text);
}

}  // namespace quillcast::mail_file
