// The hosts that take the mail of a domain, as its MX records name them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "net/dns/dns_answer.h"

namespace quillcast::domain {

struct MxHost {
  std::uint16_t preference = 0;
  std::string host;

  bool operator==(const MxHost&) const = default;
};

struct MxHosts {
  std::vector<MxHost> hosts;  // the most preferred first, equal ones by name (RFC 5321 5.1)
  bool has_null = false;      // a null MX (RFC 7505): it says, also beside hosts, that none takes mail
};
MxHosts MxHostsOf(const net::DnsAnswer& mx);

}  // namespace quillcast::domain
