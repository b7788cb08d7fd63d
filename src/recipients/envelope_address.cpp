#include "recipients/envelope_address.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/address_limits.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::recipients {
namespace {

constexpr std::string_view kAroundWord = " ,;\"'()<>";

bool EndsWord(char c) { return c == ' ' || c == ',' || c == ';' || c == '"' || c == '(' || c == ')'; }

std::string_view TrimAround(std::string_view text) {
  const auto first = text.find_first_not_of(kAroundWord);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kAroundWord) - first + 1);
}

std::string_view InAngleBrackets(std::string_view text) {
  const auto close = text.rfind('>');
  if (close == std::string_view::npos) return {};
  const auto open = text.rfind('<', close);
  if (open == std::string_view::npos) return {};
  return platform::Trim(text.substr(open + 1, close - open - 1));
}

std::string_view WordRoundAt(std::string_view text) {
  const auto at = text.find('@');
  if (at == std::string_view::npos) return {};
  std::size_t begin = at;
  std::size_t end = at;
  while (begin > 0 && !EndsWord(text[begin - 1])) --begin;
  while (end < text.size() && !EndsWord(text[end])) ++end;
  return TrimAround(text.substr(begin, end - begin));
}

bool IsForbidden(char c) { return c == ' ' || c == '<' || c == '>'; }

// C0, DEL, and C1 as UTF-8 writes them. Whoever typed an address typed none of them: it was cut out of something else.
bool HoldsControl(std::string_view text) {
  while (!text.empty()) {
    const auto [code, length] = platform::DecodeUtf8(text);
    if (code < 0x20 || (code >= 0x7F && code < 0xA0)) return true;
    text.remove_prefix(length);
  }
  return false;
}

Error NoAddress(std::string_view stored, const char* why) {
  return {Failure::kBadData, Say("\"{}\" {}", platform::Printable(stored, 200), why),
          "Correct the recipient's address."};
}

}  // namespace

Result<std::string> EnvelopeAddress(std::string_view stored) {
  if (HoldsControl(stored)) return NoAddress(stored, "holds a control character, so it is no address to send to.");
  const std::string_view bracketed = InAngleBrackets(stored);
  const std::string_view address = bracketed.empty() ? WordRoundAt(stored) : bracketed;
  const auto at = address.rfind('@');
  const bool has_both_parts = at != std::string_view::npos && at > 0 && at + 1 < address.size();
  if (!has_both_parts || std::any_of(address.begin(), address.end(), IsForbidden)) {
    return NoAddress(stored, "holds no address to send to.");
  }
  if (platform::AddressIsTooLong(address)) {
    return NoAddress(stored, "is too long to send to: an address has at most 254 octets, and 64 before its \"@\".");
  }
  return std::string(address);
}

}  // namespace quillcast::recipients
