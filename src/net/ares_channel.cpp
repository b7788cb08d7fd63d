#include "net/ares_channel.h"

#include <ares.h>

#include <array>

namespace quillcast::net {
namespace {

struct Sockets {
  std::array<pollfd, std::size_t{2} * ARES_GETSOCK_MAXNUM> descriptors{};
  std::size_t count = 0;
};

void AddSockets(ares_channel channel, Sockets& out) {
  std::array<ares_socket_t, ARES_GETSOCK_MAXNUM> sockets{};
  const auto bits = static_cast<unsigned>(ares_getsock(channel, sockets.data(), ARES_GETSOCK_MAXNUM));
  for (unsigned n = 0; n < ARES_GETSOCK_MAXNUM; ++n) {
    const int events = (ARES_GETSOCK_READABLE(bits, n) ? POLLIN : 0) | (ARES_GETSOCK_WRITABLE(bits, n) ? POLLOUT : 0);
    if (events != 0) out.descriptors[out.count++] = {sockets[n], static_cast<short>(events), 0};
  }
}

// When the library wants to be called again although nothing came, to ask the next server.
Deadline NextRetry(ares_channel channel, platform::Instant now) {
  timeval room{};
  const timeval* left = ares_timeout(channel, nullptr, &room);
  if (left == nullptr) return Deadline::Never();
  return Deadline::After(now, std::chrono::seconds(left->tv_sec) + std::chrono::microseconds(left->tv_usec));
}

// A socket of another channel is passed over.
void Process(ares_channel channel, const Sockets& sockets) {
  bool any = false;
  for (std::size_t n = 0; n < sockets.count; ++n) {
    const pollfd& one = sockets.descriptors[n];
    if (one.revents == 0) continue;
    any = true;
    const bool readable = (one.revents & (POLLIN | POLLERR | POLLHUP)) != 0;
    ares_process_fd(channel, readable ? one.fd : ARES_SOCKET_BAD,
                    (one.revents & POLLOUT) != 0 ? one.fd : ARES_SOCKET_BAD);
  }
  if (!any) ares_process_fd(channel, ARES_SOCKET_BAD, ARES_SOCKET_BAD);
}

}  // namespace

void CloseAresChannel::operator()(ares_channeldata* channel) const { ares_destroy(channel); }

Result<bool> DriveChannel(ares_channeldata* channel, const Patience& patience, ares_channeldata* second) {
  Sockets sockets;
  Deadline until = patience.deadline;
  const auto now = patience.clock.Monotonic();
  for (ares_channeldata* one : {channel, second}) {
    if (one == nullptr) continue;
    AddSockets(one, sockets);
    until = Earlier(until, NextRetry(one, now));
  }
  const auto waited = WaitAny(std::span(sockets.descriptors).first(sockets.count), patience, until);
  if (!waited) return waited.error();
  if (patience.deadline.Passed(patience.clock.Monotonic())) return false;
  Process(channel, sockets);
  if (second != nullptr) Process(second, sockets);
  return true;
}

}  // namespace quillcast::net
