#include "html/local_pictures_address.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "html/local_name.h"
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

struct Row {
  std::string_view begin;
  std::string_view end;
};
// The first is our own.
constexpr auto kTags = std::to_array<Row>({{"$*Merge", "*$"},
                                           {"{{", "}}"},
                                           {"{%", "%}"},
                                           {"${", "}"},
                                           {"*|", "|*"},
                                           {"%%=", "=%%"},
                                           {"%%", "%%"},
                                           {"<%", "%>"},
                                           {"[[", "]]"}});

// Up to its query or fragment. In what another program fills in, such as "{{#if x}}" and "{{a?b}}", stands neither.
std::string_view WithoutQuery(std::string_view address) {
  constexpr std::size_t kLongestTag = 200;
  if (TagLength(address) == 0) return address.substr(0, address.find_first_of("?#"));
  std::size_t at = TagLength(address);
  while (at < address.size() && address[at] != '?' && address[at] != '#') {
    at += std::max<std::size_t>(1, TagLength(address.substr(at, kLongestTag)));
  }
  return address.substr(0, at);
}

}  // namespace

// A folder may be called "[[a" too.
std::size_t TagLength(std::string_view address) {
  for (const Row& row : kTags) {
    if (!address.starts_with(row.begin)) continue;
    const std::size_t end = address.find(row.end, row.begin.size());
    const std::string_view name = address.substr(0, end);
    const bool is_name = row.begin != row.end || name.find_first_of("/\\") == std::string_view::npos;
    return end != std::string_view::npos && is_name ? end + row.end.size() : 0;
  }
  const auto is_of_name = [](char c) { return platform::AsciiIsAlnum(c) || c == '.' || c == '_' || c == '-'; };
  const bool is_one = address.size() > 2 && address.front() == '%' && address.back() == '%' &&
                      std::all_of(address.begin() + 1, address.end() - 1, is_of_name);  // "%recipient.url%"
  return is_one ? address.size() : 0;
}

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
  rest = WithoutQuery(rest);
  if (rest.empty()) return {};
  auto path = platform::PercentDecoded(rest);
  if (!path) return {};  // no file has such a name
  return {scheme > 0 || is_share ? AddressKind::kFile : AddressKind::kRelative, std::move(*path)};
}

bool HoldsPlaceholder(std::string_view text) {
  return std::any_of(kTags.begin() + 1, kTags.end(),
                     [&](const Row& row) { return text.find(row.begin) != std::string_view::npos; });
}

bool BeginsWithTag(std::string_view address) { return TagLength(platform::Trim(address)) > 0; }

bool IsFilledIn(std::string_view address) {
  const std::string_view given = platform::Trim(address);
  const std::size_t length = TagLength(given);
  if (length == 0) return false;
  const std::string_view behind = given.substr(length);
  const std::string path = platform::ReplaceAll(WithoutQuery(given).substr(length), "\\", "/");
  const std::string normal =
      std::filesystem::path(platform::PercentDecoded(path).value_or(path)).lexically_normal().string();
  return !AddressNamesLocalFile(given) && !AddressNamesLocalFile(behind) && !HoldsHomeFolder(normal);
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
