#include "compose/link_address.h"

#include <algorithm>

#include "platform/text.h"

namespace quillcast::compose {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The length of "https:" (RFC 3986 3.1); 0 when there is none. "example.org:8080" begins with a host and its port.
std::size_t SchemeLength(std::string_view address) {
  const auto colon = address.find(':');
  if (colon == std::string_view::npos || colon == 0 || IsDigit(address.front())) return 0;
  const auto scheme = address.substr(0, colon);
  const bool is_name = std::all_of(scheme.begin(), scheme.end(), [](char c) {
    return platform::AsciiIsAlnum(c) || c == '+' || c == '-' || c == '.';
  });
  const bool is_port = colon + 1 < address.size() && IsDigit(address[colon + 1]) &&
                       !platform::EqualsIgnoringAsciiCase(scheme, "tel") &&
                       !platform::EqualsIgnoringAsciiCase(scheme, "sms");
  return is_name && !is_port ? colon + 1 : 0;
}

}  // namespace

std::string LinkAddress(std::string_view typed) {
  const auto address = platform::Trim(typed);
  const auto scheme = SchemeLength(address);
  if (address.find_first_not_of('/', scheme) == std::string_view::npos) return {};
  if (scheme > 0 || address.starts_with('#') || address.starts_with("$*")) return std::string(address);
  if (address.starts_with("//")) return "https:" + std::string(address);
  const bool is_mail = address.find('@') < address.find('/');
  return (is_mail ? "mailto:" : "https://") + std::string(address);
}

}  // namespace quillcast::compose
