#include "net/connect.h"

#include <fmt/format.h>
#include <netinet/in.h>
#include <netinet/tcp.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <vector>

namespace quillcast::net {
namespace {

using platform::UniqueFd;

constexpr std::chrono::milliseconds kStagger{250};
constexpr std::size_t kMostAtOnce = 16;

Error NotConnected(const std::string& peer, int error_number) {
  return {Failure::kUnavailable, Say("No connection to {}: {}.", peer, std::strerror(error_number)),
          "Check the server's name and port, and that it is running."};
}

// What is said of a connection that the other side took and threw away since: a server that wants none refuses it
// (tcp(7)). What it said before can still be read.
bool WasConnected(int error_number) { return error_number == ECONNRESET || error_number == EPIPE; }

void SetOption(int socket, int level, int option) {
  const int on = 1;
  IgnoreErrors(::setsockopt(socket, level, option, &on, sizeof on));  // a connection works without
}

}  // namespace

bool Connecting::MayStart() const { return next_ < waiting_.size() && running_.size() < kMostAtOnce; }

TriedAddress& Connecting::TriedOf(const Endpoint& peer) {
  const auto found = std::find_if(tried_.begin(), tried_.end(), [&](const auto& one) { return one.peer == peer; });
  return found == tried_.end() ? tried_.emplace_back(TriedAddress{.peer = peer}) : *found;
}

void Connecting::Failed(const Endpoint& peer, int error) {
  last_ = NotConnected(called_.empty() ? ToString(peer) : called_, error);
  TriedOf(peer).error = error;
  failed_ = true;
}

void Connecting::Start() {
  const Endpoint peer{waiting_[next_++], port_};
  TriedOf(peer);
  const int family = peer.address.family == Family::kIpv4 ? AF_INET : AF_INET6;
  UniqueFd socket(::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  const SocketAddress address = ToSystem(peer);
  if (!socket || (::connect(socket.get(), address.get(), address.length) != 0 && errno != EINPROGRESS)) {
    return Failed(peer, errno);
  }
  running_.push_back({std::move(socket), peer});
}

// The socket that is connected; those that failed are dropped on the way.
UniqueFd Connecting::TakeWinner() {
  std::vector<pollfd> ready;
  WaitFor(ready);
  IgnoreErrors(::poll(ready.data(), ready.size(), 0));  // then none of them is ready
  std::size_t at = 0;                                   // in running_, as those that failed go
  for (const pollfd& one : ready) {
    if (one.revents == 0) {
      ++at;
      continue;
    }
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(one.fd, SOL_SOCKET, SO_ERROR, &error, &length);
    if (error == 0 || WasConnected(error)) {
      TriedOf(running_[at].peer).connected = true;
      return std::move(running_[at].socket);
    }
    Failed(running_[at].peer, error);
    running_.erase(running_.begin() + static_cast<std::ptrdiff_t>(at));
  }
  return {};
}

std::optional<Result<UniqueFd>> Connecting::Step(platform::Instant now) {
  for (;;) {
    if (UniqueFd winner = TakeWinner()) {
      SetOption(winner.get(), IPPROTO_TCP, TCP_NODELAY);
      SetOption(winner.get(), SOL_SOCKET, SO_KEEPALIVE);
      return winner;
    }
    if (running_.empty() && next_ == waiting_.size()) {
      return last_.value_or(Error{Failure::kUnavailable, "There is no address to connect to."});
    }
    if (!MayStart() || (!failed_ && now < begun_ + kStagger)) return {};
    failed_ = false;
    begun_ = now;
    Start();
  }
}

void Connecting::WaitFor(std::vector<pollfd>& out) const {
  for (const Attempt& attempt : running_) out.push_back({attempt.socket.get(), POLLOUT, 0});
}

Deadline Connecting::Again() const { return MayStart() ? Deadline::After(begun_, kStagger) : Deadline::Never(); }

Error Connecting::Late() {
  return {Failure::kTimedOut, "The server did not take the connection in time.",
          "Check the server's name and port; a firewall may be in between."};
}

Result<UniqueFd> Connect(std::span<const IpAddress> addresses, std::uint16_t port, const Patience& patience) {
  Connecting connecting(addresses, port);
  for (;;) {
    const auto now = patience.clock.Monotonic();
    if (auto done = connecting.Step(now)) return *std::move(done);
    if (patience.deadline.Passed(now)) return Connecting::Late();
    std::vector<pollfd> descriptors;
    connecting.WaitFor(descriptors);
    const auto waited = WaitAny(descriptors, patience, Earlier(connecting.Again(), patience.deadline));
    if (!waited) return waited.error();
  }
}

}  // namespace quillcast::net
