#include "smtp/sasl/sasl_prep.h"

#include <openssl/crypto.h>
#include <unicode/usprep.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <memory>
#include <string>

namespace quillcast::smtp {
namespace {

struct CloseProfile {
  void operator()(UStringPrepProfile* profile) const { usprep_close(profile); }
};

// UTF-16 that is wiped when it goes.
struct WideSecret {
  explicit WideSecret(std::size_t room) : text(room, u'\0') {}
  ~WideSecret() { OPENSSL_cleanse(text.data(), text.size() * sizeof(char16_t)); }
  WideSecret(const WideSecret&) = delete;
  WideSecret& operator=(const WideSecret&) = delete;
  int32_t room() const { return static_cast<int32_t>(text.size()); }
  std::u16string text;
};

constexpr std::size_t kLongest = 4096;   // octets; beyond it no line of SMTP holds what is made of it
constexpr std::size_t kMostGrowth = 18;  // characters that NFKC makes of one
constexpr std::size_t kUtf8Growth = 3;   // octets of UTF-8 for a unit of UTF-16

Error Forbidden() { return {Failure::kBadData, "The user or the password holds characters that no server takes."}; }

}  // namespace

Result<platform::Secret> SaslPrep(std::string_view text) {
  // Printable ASCII is its own form.
  if (std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; }))
    return platform::Secret(text);
  if (text.size() > kLongest) return Forbidden();
  UErrorCode status = U_ZERO_ERROR;
  WideSecret wide(text.size());
  int32_t length = 0;
  u_strFromUTF8(wide.text.data(), wide.room(), &length, text.data(), static_cast<int32_t>(text.size()), &status);
  if (status == U_STRING_NOT_TERMINATED_WARNING) status = U_ZERO_ERROR;
  WideSecret prepared(text.size() * kMostGrowth);
  const std::unique_ptr<UStringPrepProfile, CloseProfile> profile(usprep_openByType(USPREP_RFC4013_SASLPREP, &status));
  length = usprep_prepare(profile.get(), wide.text.data(), length, prepared.text.data(), prepared.room(),
                          USPREP_ALLOW_UNASSIGNED, nullptr, &status);
  if (U_FAILURE(status)) return Forbidden();
  std::string out(static_cast<std::size_t>(length) * kUtf8Growth, '\0');
  u_strToUTF8(out.data(), static_cast<int32_t>(out.size()), &length, prepared.text.data(), length, &status);
  if (U_FAILURE(status)) return Forbidden();
  out.resize(static_cast<std::size_t>(length));
  return platform::Secret(std::move(out));
}

}  // namespace quillcast::smtp
