// Fetches the policy file of MTA-STS over HTTPS (RFC 8461 3.3).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "net/address.h"
#include "net/wait.h"

namespace quillcast::domain {

struct StsPlace {
  std::string domain;                     // "example.org", whose file is at mta-sts.example.org
  std::vector<net::IpAddress> addresses;  // of that host, as the chosen name server gave them
  std::uint16_t port = 443;
  std::string authorities = {};  // a file of certificates to trust in place of the system's
};

// At most 64 KiB, no other address followed, the certificate verified. Fails with kUnavailable where the network does
// not lead there in time, kTryAgain when the person cancels, and kBadData for what the domain's own side does wrong.
Result<std::string> FetchStsPolicy(const StsPlace& place, const net::Patience& patience);

}  // namespace quillcast::domain
