#include "net/idna.h"

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <unicode/uidna.h>

#include <algorithm>
#include <array>
#include <memory>

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::net {
namespace {

// Without its rules on ASCII, which know no "_": IsDottedName has ours.
constexpr std::uint32_t kOptions =
    UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ | UIDNA_CHECK_CONTEXTO;

constexpr std::size_t kLongestName = 255;  // octets (RFC 1035 2.3.4); what does not fit is no host's name
constexpr std::size_t kLongestDotted = 253;
constexpr std::size_t kLongestLabel = 63;

struct CloseIdna {
  void operator()(UIDNA* idna) const { uidna_close(idna); }
};

Error NoName(std::string_view host) {
  return {Failure::kNoInput, Say("\"{}\" is not a name that a host can have.", host),
          "Check the spelling of the name."};
}

bool IsLabel(std::string_view label) {
  return !label.empty() && label.size() <= kLongestLabel && !label.starts_with('-') && !label.ends_with('-') &&
         std::all_of(label.begin(), label.end(),
                     [](char c) { return platform::AsciiIsAlnum(c) || c == '-' || c == '_'; });
}

// What IDNA passes over as if it were not there. The joiners, which have rules there, are needed by some scripts.
bool HoldsUnseen(std::string_view text) {
  while (!text.empty()) {
    const auto [code, length] = platform::DecodeUtf8(text);
    const bool is_joiner = code == 0x200C || code == 0x200D;
    if (!is_joiner && u_hasBinaryProperty(static_cast<UChar32>(code), UCHAR_DEFAULT_IGNORABLE_CODE_POINT)) return true;
    text.remove_prefix(length);
  }
  return false;
}

}  // namespace

Result<std::string> AsciiHost(std::string_view host) {
  if (platform::IsAscii(host)) return std::string(host);
  if (!platform::IsUtf8(host)) return NoName(host);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UIDNA, CloseIdna> idna(uidna_openUTS46(kOptions, &status));
  std::array<char, kLongestName + 1> ascii{};
  UIDNAInfo info = UIDNA_INFO_INITIALIZER;
  const auto length = uidna_nameToASCII_UTF8(idna.get(), host.data(), static_cast<int32_t>(host.size()), ascii.data(),
                                             static_cast<int32_t>(ascii.size()), &info, &status);
  if (U_FAILURE(status) || info.errors != 0) return NoName(host);
  std::string name(ascii.data(), static_cast<std::size_t>(length));
  if (!IsDottedName(WithoutRootDot(name))) return NoName(host);
  return name;
}

bool IsDottedName(std::string_view ascii) {
  const auto labels = platform::Split(ascii, '.');
  return ascii.size() <= kLongestDotted && std::all_of(labels.begin(), labels.end(), IsLabel);
}

bool IsHostName(std::string_view host) {
  const auto ascii = AsciiHost(host);
  return ascii && IsDottedName(WithoutRootDot(*ascii)) && !HoldsUnseen(host);
}

std::string WithAsciiDomain(std::string_view address) {
  const auto at = address.rfind('@');
  if (at == std::string_view::npos || platform::IsAscii(address)) return std::string(address);
  const auto domain = AsciiHost(address.substr(at + 1));
  return domain ? std::string(address.substr(0, at + 1)) + *domain : std::string(address);
}

}  // namespace quillcast::net
