#include "recipients/envelope_address.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>

#include "platform/text.h"

namespace quillcast::recipients {
namespace {

constexpr std::string_view kAroundWord = " \t\r\n,;\"'()<>";

// A control character counts as part of the word, so that it is refused and not a separator that hides it.
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

bool IsForbidden(char c) {
  const auto byte = static_cast<std::uint8_t>(c);
  return byte <= 0x20 || byte == 0x7F || c == '<' || c == '>';
}

}  // namespace

Result<std::string> EnvelopeAddress(std::string_view stored) {
  const std::string_view bracketed = InAngleBrackets(stored);
  const std::string_view address = bracketed.empty() ? WordRoundAt(stored) : bracketed;
  const auto at = address.rfind('@');
  const bool has_both_parts = at != std::string_view::npos && at > 0 && at + 1 < address.size();
  if (has_both_parts && std::none_of(address.begin(), address.end(), IsForbidden)) return std::string(address);
  return Error{Failure::kBadData, fmt::format("\"{}\" holds no address to send to.", platform::Printable(stored, 200)),
               "Correct the recipient's address."};
}

}  // namespace quillcast::recipients
