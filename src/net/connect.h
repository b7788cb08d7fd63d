// Opens a TCP connection to the first of several addresses that answers.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "net/address.h"
#include "net/wait.h"
#include "platform/file.h"

namespace quillcast::net {

// What became of one address.
struct TriedAddress {
  Endpoint peer;
  bool connected = false;
  int error = 0;  // of the system, where it was refused or cannot be reached; else it had not answered
};

// Tries the addresses in their order. The next one is tried when one fails, or 250 ms after the last one was begun,
// while those begun go on; the first to answer wins and the others are dropped (RFC 8305 5). At most 16 are under way
// at a time. The socket is non-blocking, with TCP_NODELAY and SO_KEEPALIVE. Errors: kUnavailable with the words of the
// last address that failed, and those of Patience.
Result<platform::UniqueFd> Connect(std::span<const IpAddress> addresses, std::uint16_t port, const Patience& patience);

// The same in steps, for whoever has more to do than to wait.
class Connecting {
 public:
  // `called`: what failures name in place of the address, as a person knows it.
  Connecting(std::span<const IpAddress> addresses, std::uint16_t port, std::string called = {})
      : waiting_(addresses.begin(), addresses.end()), port_(port), called_(std::move(called)) {}

  // The socket, why there is none, or nothing where there is more to wait for: with WaitFor, until Again at most.
  std::optional<Result<platform::UniqueFd>> Step(platform::Instant now);
  void WaitFor(std::vector<pollfd>& out) const;
  Deadline Again() const;
  static Error Late();
  // Each address that was begun with, in that order.
  const std::vector<TriedAddress>& tried() const { return tried_; }

 private:
  struct Attempt {
    platform::UniqueFd socket;
    Endpoint peer;
  };
  bool MayStart() const;
  void Start();
  void Failed(const Endpoint& peer, int error);
  TriedAddress& TriedOf(const Endpoint& peer);
  platform::UniqueFd TakeWinner();

  std::vector<IpAddress> waiting_;  // and before `next_` begun with
  std::size_t next_ = 0;
  std::uint16_t port_;
  std::string called_;
  std::vector<TriedAddress> tried_;
  std::vector<Attempt> running_;
  platform::Instant begun_{};  // the last one
  bool failed_ = true;         // one did since, so that the next need not wait
  std::optional<Error> last_;
};

}  // namespace quillcast::net
