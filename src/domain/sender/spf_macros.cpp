#include "domain/sender/spf_macros.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "platform/text.h"

namespace quillcast::domain {
namespace {

// "192.0.2.1", and of IPv6 each digit between dots (RFC 7208 7.3).
std::string DottedAddress(const net::IpAddress& address) {
  if (address.family == net::Family::kIpv4) return net::ToString(address);
  std::string out;
  for (const std::uint8_t byte : address.bytes) {
    if (!out.empty()) out += '.';
    out += fmt::format("{:x}.{:x}", byte >> 4, byte & 15);
  }
  return out;
}

std::optional<std::string> LetterValue(char letter, std::string_view domain, const SpfSender& sender) {
  const bool is_ip4 = sender.address.family == net::Family::kIpv4;
  switch (platform::AsciiLower(letter)) {
    case 's':
      return sender.local_part + "@" + sender.domain;
    case 'l':
      return sender.local_part;
    case 'o':
      return sender.domain;
    case 'd':
      return std::string(domain);
    case 'i':
      return DottedAddress(sender.address);
    case 'p':
      return "unknown";
    case 'v':
      return is_ip4 ? "in-addr" : "ip6";
    case 'h':
      return sender.host;
    default:
      return std::nullopt;
  }
}

std::vector<std::string> Pieces(std::string_view value, std::string_view separators) {
  std::vector<std::string> pieces(1);
  for (const char c : value) {
    if (separators.find(c) == std::string_view::npos) {
      pieces.back() += c;
    } else {
      pieces.emplace_back();
    }
  }
  return pieces;
}

// `body` is what stands between the braces: a letter, a number of labels, "r" to reverse them, other separators.
std::optional<std::string> MacroValue(std::string_view body, std::string_view domain, const SpfSender& sender) {
  if (body.empty()) return std::nullopt;
  const std::optional<std::string> value = LetterValue(body[0], domain, sender);
  if (!value) return std::nullopt;
  body.remove_prefix(1);
  const std::size_t digits = std::min(body.find_first_not_of("0123456789"), body.size());
  const std::string_view number = body.substr(0, digits);
  body.remove_prefix(digits);
  const bool is_reversed = !body.empty() && platform::AsciiLower(body[0]) == 'r';
  if (is_reversed) body.remove_prefix(1);
  if (body.find_first_not_of(".-+,/_=") != std::string_view::npos) return std::nullopt;

  std::vector<std::string> pieces = Pieces(*value, body.empty() ? "." : body);
  if (is_reversed) std::reverse(pieces.begin(), pieces.end());
  std::size_t kept = pieces.size();
  if (!number.empty()) {
    const auto wanted = platform::WholeNumberBetween(number, 1, 128);
    if (!wanted) return std::nullopt;
    kept = std::min(kept, static_cast<std::size_t>(*wanted));
  }
  return fmt::format("{}", fmt::join(pieces.end() - static_cast<std::ptrdiff_t>(kept), pieces.end(), "."));
}

constexpr std::size_t kLongestName = 253;

std::string Shortened(std::string name) {
  while (name.size() > kLongestName) {
    const std::size_t dot = name.find('.');
    name = dot == std::string::npos ? name.substr(name.size() - kLongestName) : name.substr(dot + 1);
  }
  return name;
}

}  // namespace

std::optional<std::string> ExpandSpfName(std::string_view name, std::string_view domain, const SpfSender& sender) {
  std::string out;
  while (!name.empty()) {
    const std::size_t percent = std::min(name.find('%'), name.size());
    out += name.substr(0, percent);
    name.remove_prefix(percent);
    if (name.empty()) break;
    if (name.starts_with("%%") || name.starts_with("%_") || name.starts_with("%-")) {
      out += name[1] == '%' ? "%" : name[1] == '_' ? " " : "%20";
      name.remove_prefix(2);
      continue;
    }
    const std::size_t end = name.find('}');
    if (!name.starts_with("%{") || end == std::string_view::npos) return std::nullopt;
    const std::optional<std::string> value = MacroValue(name.substr(2, end - 2), domain, sender);
    if (!value) return std::nullopt;
    out += *value;
    name.remove_prefix(end + 1);
  }
  return Shortened(std::move(out));
}

std::string SpfNameOf(const std::string& written, const std::string& domain, const SpfSender& sender) {
  std::string name =
      platform::AsciiLower(written.empty() ? domain : ExpandSpfName(written, domain, sender).value_or(written));
  if (name.ends_with('.')) name.pop_back();
  return name;
}

}  // namespace quillcast::domain
