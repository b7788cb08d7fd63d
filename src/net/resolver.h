// Finds the addresses of a host: /etc/hosts and the system's name servers, as the system is set up.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "net/address.h"
#include "net/ares_channel.h"

namespace quillcast::net {

// Whether this is the computer itself by what it is called: a loopback address, "localhost" or a name below it. What
// any other name leads to is for a name server to say, which others may have a hand in.
bool IsLoopbackHost(std::string_view host);

// For one thread, one question at a time. Known limit: other places where a system may keep names (multicast DNS,
// directories) are not asked.
class Resolver {
 public:
  // IPv4 and IPv6 addresses, at least one, in the order in which they are best tried (RFC 6724). An address as text is
  // its own answer; "localhost" and names below it are loopback without a query (RFC 6761 6.3). The first call reads
  // the system's setup.
  Result<std::vector<IpAddress>> Resolve(const std::string& host, const Patience& patience);

 private:
  Result<void> Open();
  AresChannel channel_;
};

}  // namespace quillcast::net
