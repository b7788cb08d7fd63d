#include "domain/sender/dkim_key.h"

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <optional>
#include <vector>

#include "domain/sender/tag_list.h"
#include "platform/base64.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

struct FreeKey {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
using OwnedKey = std::unique_ptr<EVP_PKEY, FreeKey>;

// RFC 6376 3.2: blanks may stand anywhere in base64.
std::optional<std::string> DecodedKey(std::string_view value) {
  std::string text(value);
  std::erase_if(text, [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
  return platform::DecodeBase64(text);
}

// RSA keys are published as SubjectPublicKeyInfo, by some as RSAPublicKey alone, which RFC 6376 3.6.1 names (erratum
// 3017).
int RsaBits(const std::string& der) {
  const auto* at = reinterpret_cast<const unsigned char*>(der.data());
  const auto size = static_cast<long>(der.size());  // NOLINT(google-runtime-int): what OpenSSL takes
  const unsigned char* from = at;
  OwnedKey key(d2i_PUBKEY(nullptr, &from, size));
  if (!key) {
    from = at;
    key.reset(d2i_PublicKey(EVP_PKEY_RSA, nullptr, &from, size));
  }
  return key && EVP_PKEY_base_id(key.get()) == EVP_PKEY_RSA ? EVP_PKEY_bits(key.get()) : 0;
}

// Whether one of the words, which stand between colons, is among the list of a tag.
bool Lists(std::string_view tag, std::initializer_list<std::string_view> words) {
  const std::vector<std::string_view> listed = platform::Split(tag, ':');
  return std::any_of(listed.begin(), listed.end(), [&](std::string_view one) {
    return std::find(words.begin(), words.end(), platform::Trim(one)) != words.end();
  });
}

std::string UnfitBy(const TagList& tags) {
  if (!Lists(tags.ValueOf("s", "*"), {"*", "email"})) return "s=" + std::string(tags.ValueOf("s"));
  if (!Lists(tags.ValueOf("h", "sha256"), {"sha256"})) return "h=" + std::string(tags.ValueOf("h"));
  return {};
}

constexpr std::size_t kEd25519Octets = 32;

Error Unreadable() {
  return {Failure::kBadData, "The key cannot be read.",
          "Publish the key again as the signing server gives it; a long one is often cut when it is pasted."};
}

}  // namespace

bool IsDkimKey(std::string_view record) {
  const Result<TagList> tags = TagList::Parse(record);
  if (!tags) return record.find("DKIM1") != std::string_view::npos;
  const std::string_view version = tags->ValueOf("v");
  return version.starts_with("DKIM1") || (version.empty() && tags->ValueOf("p", "none") != "none");
}

Result<DkimKey> ParseDkimKey(std::string_view record) {
  if (record.find("\\;") != std::string_view::npos) {
    return Error{Failure::kBadData, "There are backslashes before its semicolons.",
                 "Publish the record without them; they belong into zone files alone."};
  }
  const Result<TagList> tags = TagList::Parse(record);
  if (!tags) return tags.error();
  if (tags->ValueOf("v", "DKIM1") != "DKIM1") {
    return Error{Failure::kBadData, Say("\"v={}\" is no version of DKIM.", platform::Printable(tags->ValueOf("v"), 60)),
                 "Begin the record with \"v=DKIM1\"."};
  }
  DkimKey key;
  key.is_for_tests = Lists(tags->ValueOf("t"), {"y"});
  key.unfit_by = UnfitBy(*tags);
  const std::string_view kind = tags->ValueOf("k", "rsa");
  key.kind = kind == "rsa"       ? DkimKey::Kind::kRsa
             : kind == "ed25519" ? DkimKey::Kind::kEd25519
                                 : DkimKey::Kind::kUnknown;
  const std::string_view value = tags->ValueOf("p", "none");
  key.is_revoked = value.empty();
  if (key.is_revoked || key.kind == DkimKey::Kind::kUnknown) return key;
  const std::optional<std::string> der = DecodedKey(value);
  if (!der) return Unreadable();
  key.bits = key.kind == DkimKey::Kind::kRsa ? RsaBits(*der) : der->size() == kEd25519Octets ? 256 : 0;
  if (key.bits == 0) return Unreadable();
  return key;
}

}  // namespace quillcast::domain
