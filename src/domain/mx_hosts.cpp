#include "domain/mx_hosts.h"

#include <algorithm>
#include <tuple>

namespace quillcast::domain {

MxHosts MxHostsOf(const net::DnsAnswer& mx) {
  MxHosts found;
  for (const net::DnsRecord& one : mx.records) {
    if (one.text.empty()) found.has_null = true;
    if (!one.text.empty()) found.hosts.push_back({one.preference, one.text});
  }
  std::sort(found.hosts.begin(), found.hosts.end(), [](const MxHost& a, const MxHost& b) {
    return std::tie(a.preference, a.host) < std::tie(b.preference, b.host);
  });
  return found;
}

}  // namespace quillcast::domain
