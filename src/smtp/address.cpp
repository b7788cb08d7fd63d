#include "smtp/address.h"

#include <algorithm>
#include <array>

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::smtp {
namespace {

constexpr std::size_t kLongestLocalPart = 64;
constexpr std::size_t kLongestAddress = 254;

using Pattern = SentencePattern<1>;

constexpr Pattern kNone = "\"{}\" holds no address to send to.";
constexpr Pattern kNotUtf8 = "\"{}\" is not UTF-8, so it is no address to send to.";
constexpr Pattern kTooLong =
    "\"{}\" is too long to send to: an address has at most 254 octets, and 64 before its \"@\".";

// What would end an unquoted part early, begin another one, or make a route of it (RFC 5321 4.1.1.3).
constexpr auto kIsSpecial = [] {
  std::array<bool, 256> special{};
  for (const char c : std::string_view(" <>()[]\\,;:\"@")) special[static_cast<unsigned char>(c)] = true;
  return special;
}();

bool IsPlain(std::string_view part) {
  return !part.empty() &&
         std::none_of(part.begin(), part.end(), [](char c) { return kIsSpecial[static_cast<unsigned char>(c)]; });
}

// The length of a quoted local part at the beginning, with both quotes; 0 where it does not end, or holds what is never
// taken.
std::size_t QuotedLength(std::string_view text) {
  for (std::size_t n = 1; n < text.size(); ++n) {
    if (text[n] == '"') return n + 1;
    if (text[n] == ' ' || text[n] == '<' || text[n] == '>') return 0;
    if (text[n] == '\\') ++n;
  }
  return 0;
}

// "[192.0.2.1]" or "[IPv6:2001:db8::1]" (RFC 5321 4.1.3).
bool IsLiteral(std::string_view domain) {
  if (domain.size() < 3 || domain.front() != '[' || domain.back() != ']') return false;
  const std::string_view inside = domain.substr(1, domain.size() - 2);
  return inside.find_first_of(" <>()[]\\,;\"@") == std::string_view::npos;
}

// Whether it is one local part, plain or quoted as a whole, an "@" and a domain.
bool IsOne(std::string_view text) {
  const bool is_quoted = text.starts_with('"');
  const std::size_t at = is_quoted ? QuotedLength(text) : text.find('@');
  if (at == 0 || at >= text.size() || text[at] != '@') return false;
  const std::string_view domain = text.substr(at + 1);
  return (is_quoted || IsPlain(text.substr(0, at))) && (IsPlain(domain) || IsLiteral(domain));
}

}  // namespace

std::optional<Pattern> Address::Fault(std::string_view text) {
  if (platform::HoldsControl(text)) return kHoldsControl;
  if (!platform::IsUtf8(text)) return kNotUtf8;
  if (!IsOne(text)) return kNone;
  if (text.rfind('@') > kLongestLocalPart || text.size() > kLongestAddress) return kTooLong;
  return {};
}

Result<Address> Address::From(std::string_view text) {
  if (const auto fault = Fault(text)) {
    return Error{Failure::kBadData, Say(*fault, platform::Printable(text, 200)), "Correct the address."};
  }
  return Address(std::string(text));
}

}  // namespace quillcast::smtp
