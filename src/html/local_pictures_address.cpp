#include "html/local_pictures_address.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/text.h"

namespace quillcast::html {
namespace {

using platform::StartsWithIgnoringAsciiCase;

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
  const bool is_share = platform::Trim(address).starts_with("\\\\");  // "\\\\server\\folder", as file://server/folder
  std::replace(address.begin(), address.end(), '\\', '/');
  std::string_view rest = platform::Trim(address);
  if (rest.find("$*Merge") != std::string_view::npos) return {};
  const std::size_t scheme = SchemeLength(rest);
  if (scheme > 0 ? !StartsWithIgnoringAsciiCase(rest, "file:") : rest.starts_with("//") && !is_share) return {};
  rest.remove_prefix(scheme);
  if (scheme > 0 && StartsWithIgnoringAsciiCase(rest, "//localhost/")) rest.remove_prefix(11);
  if (scheme > 0 && rest.starts_with("///")) rest.remove_prefix(2);
  rest = rest.substr(0, rest.find_first_of("?#"));
  if (rest.empty()) return {};
  auto path = platform::PercentDecoded(rest);
  if (!path) return {};  // no file has such a name
  return {scheme > 0 || is_share ? AddressKind::kFile : AddressKind::kRelative, std::move(*path)};
}

bool BeginsWithTag(std::string_view address) {
  constexpr std::array<std::string_view, 8> kBegins = {"$*Merge", "{{", "{%", "${", "*|", "%%", "<%", "[["};
  const std::string_view given = platform::Trim(address);
  const auto is_of_name = [](char c) { return platform::AsciiIsAlnum(c) || c == '.' || c == '_' || c == '-'; };
  if (std::any_of(kBegins.begin(), kBegins.end(), [&](std::string_view one) { return given.starts_with(one); })) {
    return true;
  }
  return given.size() > 2 && given.front() == '%' && given.back() == '%' &&
         std::all_of(given.begin() + 1, given.end() - 1, is_of_name);  // "%recipient.url%"
}

bool TellsFolder(const LocalAddress& address) {
  return address.kind == AddressKind::kFile || address.path.starts_with('/') ||
         address.path.substr(0, 3).ends_with(":/");
}

LocalAddress Resolve(const LocalAddress& base, LocalAddress address) {
  if (base.kind == AddressKind::kElsewhere) return {};
  if (address.path.starts_with('/')) return address;
  return {base.kind, base.path.substr(0, base.path.rfind('/') + 1) + address.path};
}

}  // namespace quillcast::html
