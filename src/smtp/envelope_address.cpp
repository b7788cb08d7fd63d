#include "smtp/envelope_address.h"

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::smtp {
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

Error NoAddress(std::string_view stored, SentencePattern<1> fault) {
  return {Failure::kBadData, Say(fault, platform::Printable(stored, 200)), "Correct the recipient's address."};
}

}  // namespace

Result<Address> EnvelopeAddress(std::string_view stored) {
  // Whoever typed an address typed no control character anywhere near it: it was cut out of something else.
  if (platform::HoldsControl(stored)) return NoAddress(stored, Address::kHoldsControl);
  const std::string_view bracketed = InAngleBrackets(stored);
  const std::string_view found = bracketed.empty() ? WordRoundAt(stored) : bracketed;
  auto address = Address::From(found);
  if (!address) return NoAddress(stored, *Address::Fault(found));  // a word about all that is stored
  return address;
}

}  // namespace quillcast::smtp
