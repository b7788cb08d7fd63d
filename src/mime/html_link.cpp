#include "mime/html_link.h"

#include <algorithm>
#include <cstdint>

#include "platform/text.h"

namespace quillcast::mime {
namespace {

std::string WithoutBlanks(std::string_view text) {
  std::string out = platform::ReplaceAll(text, "\xC2\xA0", "");
  std::erase_if(out, [](char c) { return c == ' ' || static_cast<std::uint8_t>(c) < 0x20; });
  return out;
}

// "https://example.org/" and "example.org" tell the reader the same.
std::string_view WithoutSchemeAndSlash(std::string_view address) {
  for (const std::string_view scheme : {"https://", "http://"}) {
    if (platform::StartsWithIgnoringAsciiCase(address, scheme)) address.remove_prefix(scheme.size());
  }
  if (address.ends_with('/')) address.remove_suffix(1);
  return address;
}

}  // namespace

std::string ReadableTarget(std::string href) {
  std::erase_if(href, [](char c) { return static_cast<std::uint8_t>(c) < 0x20; });
  std::string_view rest = platform::Trim(href);
  if (rest.starts_with('#') || platform::StartsWithIgnoringAsciiCase(rest, "javascript:")) return {};
  if (platform::StartsWithIgnoringAsciiCase(rest, "mailto:")) {
    rest.remove_prefix(std::string_view("mailto:").size());
    rest = rest.substr(0, rest.find('?'));
  } else if (platform::StartsWithIgnoringAsciiCase(rest, "tel:")) {
    rest.remove_prefix(std::string_view("tel:").size());
  }
  return std::string(rest);
}

bool SaysTarget(std::string_view text, std::string_view target) {
  const std::string said = WithoutBlanks(text);
  const std::string wanted = WithoutBlanks(target);
  return WithoutSchemeAndSlash(said) == WithoutSchemeAndSlash(wanted);
}

}  // namespace quillcast::mime
