// Asks name servers for records: many questions at once, with a deadline and a cancel.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "net/ares_channel.h"
#include "net/dns/dns_answer.h"

namespace quillcast::net {

// "192.0.2.1", "192.0.2.1:5353", "2001:db8::1", "[2001:db8::1]:5353", "fe80::1%eth0"; the port is 53 where none is
// said. Nothing for what is no address: a name would have to be looked up first, at whom nobody has chosen.
std::optional<Endpoint> ParseDnsServer(std::string_view text);

// Those of the system's setup, in its order; the computer itself where it names none.
std::vector<Endpoint> SystemDnsServers();

// For one thread. Several servers are asked in their order, the next when one does not answer or fails: about ten
// seconds for a server that is silent. An answer that did not fit into a datagram is fetched over TCP, which may
// take ten seconds, and an alias is followed to its end, up to eight questions on. A message that answers none of our
// questions is waited past, since the right one may still come (RFC 5452 9.1), and decides only when nothing else came.
// Known limit: multicast DNS is not asked.
//
// Chains of questions that do not wait for each other overlap:
//
//   DnsClient client({*ParseDnsServer("192.0.2.1")});
//   client.Ask({"example.org", DnsType::kMx}, [&](const DnsAnswer& mx) {
//     for (const DnsRecord& one : mx.records) client.Ask({one.text, DnsType::kA}, ...);
//   });
//   client.Ask({"example.org", DnsType::kTxt}, ...);
//   const auto done = client.Run(patience);
class DnsClient {
 public:
  // Called once for each question, from within Run alone; may ask further. It may not end the client.
  using Then = std::function<void(const DnsAnswer&)>;

  // Without servers, those of the system.
  explicit DnsClient(std::vector<Endpoint> servers = {});
  ~DnsClient();
  DnsClient(const DnsClient&) = delete;
  DnsClient& operator=(const DnsClient&) = delete;

  // Sends the question; Run brings the answer.
  void Ask(DnsQuestion question, Then then);

  // Until every question has its answer, those that come on the way included. A deadline that passes is an answer
  // (kNoAnswer for each that is open). Fails when the person cancels or the system refuses a resource; questions that
  // are open then are dropped and nobody is called.
  Result<void> Run(const Patience& patience);

 private:
  struct Pending;
  struct Watch;

  void Send(Pending& pending, const std::string& name);
  bool GoesOn(Pending& one);
  void Deliver();
  void CancelAll();
  void Drop();

  std::vector<Endpoint> servers_;
  std::unique_ptr<Watch> watch_;
  std::list<Pending> pending_;
  // The last: their end calls back for what is open.
  AresChannel channel_;
  AresChannel tcp_channel_;  // where an answer was cut
};

// All of them at once; the answers stand in the order of the questions. Fails as DnsClient::Run does.
Result<std::vector<DnsAnswer>> AskAll(std::span<const DnsQuestion> questions, std::vector<Endpoint> servers,
                                      const Patience& patience);

}  // namespace quillcast::net
