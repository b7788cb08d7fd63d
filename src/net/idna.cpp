#include "net/idna.h"

#include <fmt/format.h>
#include <unicode/uidna.h>

#include <array>
#include <memory>

#include "platform/utf8.h"

namespace quillcast::net {
namespace {

constexpr std::uint32_t kOptions = UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_USE_STD3_RULES | UIDNA_CHECK_BIDI |
                                   UIDNA_CHECK_CONTEXTJ | UIDNA_CHECK_CONTEXTO;

constexpr std::size_t kLongestName = 255;  // octets (RFC 1035 2.3.4); what does not fit is no host's name

struct CloseIdna {
  void operator()(UIDNA* idna) const { uidna_close(idna); }
};

Error NoName(std::string_view host) {
  return {Failure::kNoInput, Say("\"{}\" is not a name that a host can have.", host),
          "Check the spelling of the name."};
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
  return std::string(ascii.data(), static_cast<std::size_t>(length));
}

std::string WithAsciiDomain(std::string_view address) {
  const auto at = address.rfind('@');
  if (at == std::string_view::npos) return std::string(address);
  const auto domain = AsciiHost(address.substr(at + 1));
  return domain ? std::string(address.substr(0, at + 1)) + *domain : std::string(address);
}

}  // namespace quillcast::net
