// Finds the addresses of a host: /etc/hosts and the system's name servers, as the system is set up.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "net/address.h"
#include "net/ares_channel.h"

struct ares_addrinfo;

namespace quillcast::net {

// Whether this is the computer itself by what it is called: a loopback address, "localhost" or a name below it. What
// any other name leads to is for a name server to say, which others may have a hand in.
bool IsLoopbackHost(std::string_view host);

// For one thread, one question at a time. Known limit: other places where a system may keep names (multicast DNS,
// directories) are not asked.
class Resolver {
 public:
  using Found = Result<std::vector<IpAddress>>;

  Resolver();
  ~Resolver();

  // IPv4 and IPv6 addresses, at least one, in the order in which they are best tried (RFC 6724). An address as text is
  // its own answer; "localhost" and names below it are loopback without a query (RFC 6761 6.3). The first call reads
  // the system's setup.
  Found Resolve(const std::string& host, const Patience& patience);

  // The same in steps, for whoever has more to do than to wait: what Step gives nothing for is waited for with WaitFor
  // until Again at most, and given up with Late.
  void Begin(const std::string& host);
  std::optional<Found> Step();
  void WaitFor(std::vector<pollfd>& out) const;
  Deadline Again(platform::Instant now) const;
  Error Late();

 private:
  struct Answer;
  static void Keep(void* answer, int status, int timeouts, ares_addrinfo* result);
  Result<void> Open();

  std::unique_ptr<Answer> answer_;  // what the channel's question ends in
  AresChannel channel_;
  std::string host_;
  std::optional<Found> known_;  // without a question
};

}  // namespace quillcast::net
