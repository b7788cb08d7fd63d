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

struct Attempt {
  UniqueFd socket;
  Endpoint peer;
};

Error NotConnected(const Endpoint& peer, int error_number) {
  return {Failure::kUnavailable, Say("No connection to {}: {}.", ToString(peer), std::strerror(error_number)),
          "Check the server's name and port, and that it is running."};
}

// The attempts that are under way, and the addresses that are still to be tried.
class Race {
 public:
  Race(std::span<const IpAddress> addresses, std::uint16_t port, std::vector<TriedAddress>* tried)
      : waiting_(addresses), port_(port), tried_(tried) {}

  Result<UniqueFd> Run(const Patience& patience);

 private:
  bool MayStart() const { return !waiting_.empty() && running_.size() < kMostAtOnce; }
  void Start();
  void Failed(const Endpoint& peer, int error);
  TriedAddress* TriedOf(const Endpoint& peer);
  UniqueFd TakeWinner(std::span<const pollfd> ready);

  std::span<const IpAddress> waiting_;
  std::uint16_t port_;
  std::vector<TriedAddress>* tried_;  // null where nobody wants to know
  std::vector<Attempt> running_;
  Error last_{Failure::kUnavailable, "There is no address to connect to."};
};

TriedAddress* Race::TriedOf(const Endpoint& peer) {
  if (tried_ == nullptr) return nullptr;
  const auto found =
      std::find_if(tried_->begin(), tried_->end(), [&](const TriedAddress& one) { return one.peer == peer; });
  return found == tried_->end() ? &tried_->emplace_back(TriedAddress{.peer = peer}) : &*found;
}

void Race::Failed(const Endpoint& peer, int error) {
  last_ = NotConnected(peer, error);
  if (auto* tried = TriedOf(peer)) tried->error = error;
}

void Race::Start() {
  const Endpoint peer{waiting_.front(), port_};
  waiting_ = waiting_.subspan(1);
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
UniqueFd Race::TakeWinner(std::span<const pollfd> ready) {
  for (std::size_t n = ready.size(); n-- > 0;) {
    if (ready[n].revents == 0) continue;
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(ready[n].fd, SOL_SOCKET, SO_ERROR, &error, &length);
    if (error == 0) {
      if (auto* tried = TriedOf(running_[n].peer)) tried->connected = true;
      return std::move(running_[n].socket);
    }
    Failed(running_[n].peer, error);
    running_.erase(running_.begin() + static_cast<std::ptrdiff_t>(n));
  }
  return {};
}

Result<UniqueFd> Race::Run(const Patience& patience) {
  for (;;) {
    if (MayStart()) Start();
    if (running_.empty() && waiting_.empty()) return last_;
    if (running_.empty()) continue;
    std::vector<pollfd> descriptors;
    for (const Attempt& attempt : running_) descriptors.push_back({attempt.socket.get(), POLLOUT, 0});
    const auto now = patience.clock.Monotonic();
    const Deadline until = MayStart() ? Earlier(Deadline::After(now, kStagger), patience.deadline) : patience.deadline;
    const auto waited = WaitAny(descriptors, patience, until);
    if (!waited) return waited.error();
    if (UniqueFd winner = TakeWinner(descriptors)) return winner;
    if (patience.deadline.Passed(patience.clock.Monotonic())) {
      return Error{Failure::kTimedOut, "The server did not take the connection in time.",
                   "Check the server's name and port; a firewall may be in between."};
    }
  }
}

void SetOption(int socket, int level, int option) {
  const int on = 1;
  IgnoreErrors(::setsockopt(socket, level, option, &on, sizeof on));  // a connection works without
}

}  // namespace

Result<UniqueFd> Connect(std::span<const IpAddress> addresses, std::uint16_t port, const Patience& patience,
                         std::vector<TriedAddress>* tried) {
  auto connected = Race(addresses, port, tried).Run(patience);
  if (connected) {
    SetOption(connected->get(), IPPROTO_TCP, TCP_NODELAY);
    SetOption(connected->get(), SOL_SOCKET, SO_KEEPALIVE);
  }
  return connected;
}

}  // namespace quillcast::net
