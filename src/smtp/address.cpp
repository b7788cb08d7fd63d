#include "smtp/address.h"

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

// Whether nothing in it ends it early, begins another one, or leaves a quote open. Within quotes only what is never
// taken counts.
bool IsOne(std::string_view text) {
  bool quoted = false;
  for (std::size_t n = 0; n < text.size(); ++n) {
    switch (text[n]) {
      case ' ':
      case '<':
      case '>':
        return false;
      case ',':
      case ';':
      case '(':
      case ')':
        if (!quoted) return false;
        break;
      case '"':
        quoted = !quoted;
        break;
      case '\\':
        if (!quoted || n + 1 == text.size()) return false;
        if (text[n + 1] == '"' || text[n + 1] == '\\') ++n;
        break;
      default:
        break;
    }
  }
  return !quoted;
}

}  // namespace

std::optional<Pattern> Address::Fault(std::string_view text) {
  if (platform::HoldsControl(text)) return kHoldsControl;
  if (!platform::IsUtf8(text)) return kNotUtf8;
  const auto at = text.rfind('@');
  const bool has_both_parts = at != std::string_view::npos && at > 0 && at + 1 < text.size();
  if (!has_both_parts || !IsOne(text)) return kNone;
  if (at > kLongestLocalPart || text.size() > kLongestAddress) return kTooLong;
  return {};
}

Result<Address> Address::From(std::string_view text) {
  if (const auto fault = Fault(text)) {
    return Error{Failure::kBadData, Say(*fault, platform::Printable(text, 200)), "Correct the address."};
  }
  return Address(std::string(text));
}

}  // namespace quillcast::smtp
