#include "document/link_address.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/text.h"

namespace quillcast::document {
namespace {

// Those whose addresses may be a number alone.
constexpr auto kNumberSchemes = std::to_array<std::string_view>({"tel", "sms", "mailto", "sip"});

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Whether what follows a colon is a port (RFC 3986 3.2.3): digits alone as far as the path, the query or the fragment.
bool BeginsWithPort(std::string_view rest) {
  const auto digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
  return digits > 0 && (digits == rest.size() || std::string_view("/?#").find(rest[digits]) != std::string_view::npos);
}

// The length of "https:" (RFC 3986 3.1); 0 when there is none. "example.org:8080" begins with a host and its port.
std::size_t SchemeLength(std::string_view address) {
  const auto colon = address.find(':');
  if (colon == std::string_view::npos || colon == 0 || IsDigit(address.front())) return 0;
  const auto scheme = address.substr(0, colon);
  const bool is_name = std::all_of(scheme.begin(), scheme.end(), [](char c) {
    return platform::AsciiIsAlnum(c) || c == '+' || c == '-' || c == '.';
  });
  const bool takes_numbers = std::any_of(kNumberSchemes.begin(), kNumberSchemes.end(), [&](std::string_view known) {
    return platform::EqualsIgnoringAsciiCase(scheme, known);
  });
  return is_name && (takes_numbers || !BeginsWithPort(address.substr(colon + 1))) ? colon + 1 : 0;
}

// Without the scheme that stood in the box before a whole address was put behind it.
std::string_view WithOneScheme(std::string_view address) {
  constexpr auto kWeb = std::to_array<std::string_view>({"https://", "http://"});
  const auto web_length = [&](std::string_view text) {
    const auto* const found = std::find_if(kWeb.begin(), kWeb.end(), [&](std::string_view scheme) {
      return platform::StartsWithIgnoringAsciiCase(text, scheme);
    });
    return found == kWeb.end() ? 0 : found->size();
  };
  for (std::size_t length = web_length(address); length > 0 && web_length(address.substr(length)) > 0;
       length = web_length(address)) {
    address.remove_prefix(length);
  }
  return address;
}

}  // namespace

std::string LinkAddress(std::string_view typed) {
  const auto address = WithOneScheme(platform::Trim(typed));
  const auto scheme = SchemeLength(address);
  if (address.find_first_not_of('/', scheme) == std::string_view::npos) return {};
  if (scheme > 0 || address.starts_with('#') || address.starts_with("$*")) return std::string(address);
  if (address.starts_with("//")) return "https:" + std::string(address);
  const bool is_mail = address.find('@') < address.find('/');
  return (is_mail ? "mailto:" : "https://") + std::string(address);
}

}  // namespace quillcast::document
