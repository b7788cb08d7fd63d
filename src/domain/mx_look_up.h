// From a domain to the hosts that take its mail, and the codes that a look-up of them ends with.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "domain/mx_hosts.h"
#include "net/wait.h"
#include "platform/result.h"

namespace quillcast::domain {

// What a look-up of mail hosts ended with, where it found no count.
enum class MxCode { kInvalidParameter = -87, kBadDns = -5, kBadSocket = -3, kNoDns = -1 };

struct MxReport {
  std::int64_t code = 0;              // how many hosts there are, or an MxCode
  std::vector<MxHost> hosts;          // the most preferred first
  bool takes_no_mail = false;         // a null MX, and no host
  std::vector<std::string> fallback;  // the domain's own addresses, which take its mail where it has no MX
  Sentence status;                    // what is said beside the box, failures included
  std::optional<Error> failure;       // with an MxCode alone

  // The hosts, each ended by CRLF; or the word for the code. Empty for a count of 0.
  std::string Box() const;
};

// The word for a code: "Invalid Parameter", "Bad DNS", "Bad socket", "No DNS"; empty for any other.
std::string_view MxWord(std::int64_t code);

// `server` as ParseDnsServer takes it, the system's when it is empty. Every failure is a report but a cancel, which is
// kTryAgain, or a system that refuses a resource.
Result<MxReport> LookUpMx(std::string_view server, std::string_view domain, const net::Patience& patience);

}  // namespace quillcast::domain
