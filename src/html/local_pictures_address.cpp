#include "html/local_pictures_address.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/text.h"

namespace quillcast::html {
namespace {

using platform::StartsWithIgnoringAsciiCase;

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = platform::AsciiLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Nothing when a byte of the name would be 0, which no file has.
std::optional<std::string> PercentDecoded(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escape =
        text[i] == '%' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 && HexValue(text[i + 2]) >= 0;
    out += escape ? static_cast<char>(HexValue(text[i + 1]) << 4 | HexValue(text[i + 2])) : text[i];
    if (escape) i += 2;
    if (out.back() == '\0') return std::nullopt;
  }
  return out;
}

// The length of a "scheme:" at the start, 0 when there is none. One letter is the drive of a Windows path.
std::size_t SchemeLength(std::string_view address) {
  std::size_t end = 0;
  while (end < address.size() && (platform::AsciiIsAlnum(address[end]) || (end > 0 && address[end] == '+') ||
                                  (end > 0 && address[end] == '-') || (end > 0 && address[end] == '.'))) {
    ++end;
  }
  return end > 1 && end < address.size() && address[end] == ':' ? end + 1 : 0;
}

}  // namespace

LocalAddress ReadLocalAddress(std::string address) {
  std::erase_if(address, [](char c) { return c == '\n' || c == '\r' || c == '\t'; });
  std::replace(address.begin(), address.end(), '\\', '/');
  std::string_view rest = platform::Trim(address);
  if (rest.find("$*Merge") != std::string_view::npos) return {};
  const std::size_t scheme = SchemeLength(rest);
  if (scheme > 0 ? !StartsWithIgnoringAsciiCase(rest, "file:") : rest.starts_with("//")) return {};
  rest.remove_prefix(scheme);
  if (scheme > 0 && StartsWithIgnoringAsciiCase(rest, "//localhost/")) rest.remove_prefix(11);
  if (scheme > 0 && rest.starts_with("///")) rest.remove_prefix(2);
  rest = rest.substr(0, rest.find_first_of("?#"));
  if (rest.empty()) return {};
  auto path = PercentDecoded(rest);
  if (!path) return {};
  return {scheme > 0 ? AddressKind::kFile : AddressKind::kRelative, std::move(*path)};
}

LocalAddress Resolve(const LocalAddress& base, LocalAddress address) {
  if (base.kind == AddressKind::kElsewhere) return {};
  if (address.path.starts_with('/')) return address;
  return {base.kind, base.path.substr(0, base.path.rfind('/') + 1) + address.path};
}

}  // namespace quillcast::html
