// By which a domain says that mail to it travels under TLS, and to which servers (RFC 8461).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"

namespace quillcast::domain {

// A text record at "_mta-sts" that is another thing is passed over.
bool IsStsRecord(std::string_view record);

// The "id" of a record, which changes whenever the policy does. Fails with kBadData.
Result<std::string> ParseStsRecord(std::string_view record);

struct StsPolicy {
  enum class Mode { kEnforce, kTesting, kNone };
  Mode mode = Mode::kNone;
  std::vector<std::string> servers;  // "mx.example.org", "*.example.org"; none with kNone
  std::int64_t max_age = 0;          // seconds

  bool operator==(const StsPolicy&) const = default;
};

// The policy file, lines of "key: value" (RFC 8461 3.2). Fails with kBadData.
Result<StsPolicy> ParseStsPolicy(std::string_view text);

// "*" stands for one label, the leftmost (RFC 8461 4.1).
bool StsNames(std::string_view pattern, std::string_view server);

}  // namespace quillcast::domain
