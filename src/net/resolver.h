// Finds the addresses of a host: /etc/hosts and the system's name servers, as the system is set up.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "net/address.h"
#include "net/ares_channel.h"
#include "net/socket_watch.h"

struct ares_addrinfo;

namespace quillcast::net {

// Whether this is the computer itself by what it is called: a loopback address, "localhost" or a name below it. What
// any other name leads to is for a name server to say, which others may have a hand in.
bool IsLoopbackHost(std::string_view host);

// Why a host has no address.
enum class NameFault {
  kNone,
  kNoSuchName,    // no name server knows it, or it is none that could be asked for
  kNoAddress,     // the name is known
  kNoAnswer,      // of the name servers, in time
  kNoServer,      // none can be reached
  kServersFailed  // or refused
};

// For one thread, one question at a time. Known limit: other places where a system may keep names (multicast DNS,
// directories) are not asked.
class Resolver {
 public:
  using Found = Result<std::vector<IpAddress>>;

  // Asks `servers`; those of the system where none are given.
  explicit Resolver(std::vector<Endpoint> servers = {});
  ~Resolver();

  // IPv4 and IPv6 addresses, at least one, in the order in which they are best tried (RFC 6724). Where the question for
  // one of the two is not answered, those of the other are given a second or two later (RFC 8305 3): name servers and
  // routers that drop what they do not know are common. An address as text is its own answer; "localhost" and names
  // below it are loopback without a query (RFC 6761 6.3). The first call reads the system's setup.
  Found Resolve(const std::string& host, const Patience& patience);

  // The same in steps, for whoever has more to do than to wait: what Step gives nothing for is waited for with WaitFor
  // until Again at most. Late gives up, and gives what came by then, or why there is nothing.
  void Begin(const std::string& host, platform::Instant now);
  std::optional<Found> Step(platform::Instant now);
  void WaitFor(std::vector<pollfd>& out) const;
  Deadline Again(platform::Instant now) const;
  Found Late();
  // Why the last host has none.
  NameFault fault() const { return fault_; }

 private:
  struct Question;
  struct Questions;
  static void Keep(void* question, int status, int timeouts, ares_addrinfo* result);
  Result<void> Open();
  void Ask(Question& question, int family);
  bool IsDecided() const;
  void AskApart(platform::Instant now);
  bool IsEnough(platform::Instant now) const;
  Error NotFound(int status);

  const std::vector<Endpoint> servers_;
  std::unique_ptr<Questions> asked_;  // what the channel's questions end in
  SocketWatch watch_;                 // of the channel's sockets
  AresChannel channel_;
  std::string host_;
  std::string name_;            // as it is asked for
  std::optional<Found> known_;  // without a question
  NameFault fault_ = NameFault::kNone;
};

}  // namespace quillcast::net
