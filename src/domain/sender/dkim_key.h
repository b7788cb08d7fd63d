// The key that a domain publishes for its signatures (RFC 6376 3.6.1, RFC 8463).
#pragma once

#include <string>
#include <string_view>

#include "platform/result.h"

namespace quillcast::domain {

struct DkimKey {
  enum class Kind { kRsa, kEd25519, kUnknown };
  Kind kind = Kind::kRsa;
  int bits = 0;               // of the modulus; 256 for Ed25519, 0 where the kind is not known
  bool is_revoked = false;    // "p=" with nothing behind it
  bool is_for_tests = false;  // "t=y": receivers treat what it signs like what is not signed
  // The tag by which receivers of mail pass it over: "s=tlsrpt", "h=sha1" (RFC 6376 3.6.1, RFC 8301 3.1). Empty where
  // there is none; any bytes.
  std::string unfit_by = {};

  bool operator==(const DkimKey&) const = default;
};

// Whether a text record at "selector._domainkey" is meant as a key: it says so, or it has "p=".
bool IsDkimKey(std::string_view record);

// Fails with kBadData for what is no list of tags, another version, and a key that cannot be read.
Result<DkimKey> ParseDkimKey(std::string_view record);

}  // namespace quillcast::domain
