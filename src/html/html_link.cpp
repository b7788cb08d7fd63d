#include "html/html_link.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "html/local_name.h"
#include "html/local_pictures_address.h"
#include "platform/text.h"

namespace quillcast::html {
namespace {

std::string WithoutBlanks(std::string_view text) {
  std::string out = platform::ReplaceAll(text, "\xC2\xA0", "");
  std::erase_if(out, [](char c) { return c == ' ' || static_cast<std::uint8_t>(c) < 0x20; });
  return out;
}

std::string_view WithoutPrefix(std::string_view text, std::string_view prefix) {
  return platform::StartsWithIgnoringAsciiCase(text, prefix) ? text.substr(prefix.size()) : text;
}

// "https://www.example.org/" and "example.org" tell the reader the same.
std::string_view WithoutTrimmings(std::string_view address) {
  address = WithoutPrefix(WithoutPrefix(address, "https://"), "http://");
  address = WithoutPrefix(address, "www.");
  if (address.ends_with('/')) address.remove_suffix(1);
  return address;
}

// "(030) 1234-56" and "030123456" are the same number.
std::string Digits(std::string_view text) {
  std::string out(text);
  std::erase_if(out, [](char c) { return std::string_view("()-./").find(c) != std::string_view::npos; });
  return out;
}

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("+0123456789") == std::string_view::npos;
}

// "01234567" and "+491234567" are too: one is how it is dialled at home.
bool IsSameNumber(std::string_view said, std::string_view wanted) {
  constexpr std::size_t kFewestDigits = 7;
  if (said == wanted) return true;
  if (!said.starts_with('0') || !wanted.starts_with('+')) return false;
  said.remove_prefix(1);
  return said.size() >= kFewestDigits && wanted.ends_with(said);
}

// What leads a reader of the text nowhere.
constexpr std::array<std::string_view, 9> kUnreadable = {
    "#", "javascript:", "vbscript:", "data:", "cid:", "blob:", "about:", "file:", "mid:"};

}  // namespace

std::string ReadableTarget(std::string href) {
  std::erase_if(href, [](char c) { return static_cast<std::uint8_t>(c) < 0x20; });
  std::string_view target = platform::Trim(href);
  const bool unreadable = std::any_of(kUnreadable.begin(), kUnreadable.end(), [&](std::string_view start) {
    return platform::StartsWithIgnoringAsciiCase(target, start);
  });
  if (unreadable || TellsFolder(ReadLocalAddress(std::string(target))) || AddressNamesLocalFile(target)) return {};
  if (platform::StartsWithIgnoringAsciiCase(target, "mailto:")) {
    const std::string_view asked = target.substr(std::min(target.find('?'), target.size()));
    if (target.size() - asked.size() == std::string_view("mailto:").size()) return {};
    // With a subject or a text, which a list's program may go by, it is a link to be pressed.
    if (asked.size() > 1) return std::string(target);
    target.remove_suffix(asked.size());
  }
  return std::string(WithoutPrefix(WithoutPrefix(target, "mailto:"), "tel:"));
}

std::string ReadableDescription(std::string alt) {
  constexpr std::array<std::string_view, 8> kExtensions = {".png", ".jpg",  ".jpeg", ".gif",
                                                           ".bmp", ".webp", ".svg",  ".tif"};
  const std::string name = platform::AsciiLower(platform::Trim(alt));
  if (WordsNameLocalFile(alt)) return {};
  if (name.find_first_of(" \n\t") != std::string::npos) return alt;
  const bool file = std::any_of(kExtensions.begin(), kExtensions.end(),
                                [&](std::string_view extension) { return name.ends_with(extension); });
  return file || name.starts_with("http://") || name.starts_with("https://") ? std::string() : alt;
}

bool SaysTarget(std::string_view text, std::string_view target) {
  const std::string said = WithoutBlanks(text);
  const std::string wanted = WithoutBlanks(target);
  if (platform::EqualsIgnoringAsciiCase(WithoutTrimmings(said), WithoutTrimmings(wanted))) return true;
  return IsNumber(Digits(wanted)) && IsSameNumber(Digits(said), Digits(wanted));
}

}  // namespace quillcast::html
