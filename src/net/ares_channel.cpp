#include "net/ares_channel.h"

#include <ares.h>

#include <array>
#include <cstring>

namespace quillcast::net {
namespace {

constexpr std::size_t kInterfaceAt = 4;  // in a link-local address: within the 54 bits of zero behind its prefix

bool IsLinkLocal(const IpAddress& address) {
  return address.family == Family::kIpv6 && address.bytes[0] == 0xFE && (address.bytes[1] & 0xC0U) == 0x80;
}

ares_addr_port_node ServerNode(const Endpoint& server) {
  ares_addr_port_node node{};
  const bool v4 = server.address.family == Family::kIpv4;
  node.family = v4 ? AF_INET : AF_INET6;
  const IpAddress address = ForLibrary(server.address);
  std::memcpy(&node.addr, address.bytes.data(), v4 ? sizeof node.addr.addr4 : sizeof node.addr.addr6);
  node.udp_port = node.tcp_port = server.port;
  return node;
}

}  // namespace

void CloseAresChannel::operator()(ares_channeldata* channel) const { ares_destroy(channel); }

IpAddress ForLibrary(const IpAddress& address) {
  if (!IsLinkLocal(address)) return address;
  IpAddress held = address;
  std::memcpy(&held.bytes[kInterfaceAt], &address.scope, sizeof address.scope);
  held.scope = 0;
  return held;
}

IpAddress FromLibrary(const IpAddress& address) {
  if (!IsLinkLocal(address) || address.scope != 0) return address;
  IpAddress plain = address;
  std::memcpy(&plain.scope, &address.bytes[kInterfaceAt], sizeof plain.scope);
  std::memset(&plain.bytes[kInterfaceAt], 0, sizeof plain.scope);
  return plain;
}

bool SetServers(ares_channeldata* channel, std::span<const Endpoint> servers) {
  std::vector<ares_addr_port_node> nodes;
  nodes.reserve(servers.size());
  for (const Endpoint& server : servers) nodes.push_back(ServerNode(server));
  for (std::size_t n = 1; n < nodes.size(); ++n) nodes[n - 1].next = &nodes[n];
  return ares_set_servers_ports(channel, nodes.data()) == ARES_SUCCESS;
}

void AddSockets(ares_channeldata* channel, std::vector<pollfd>& out) {
  std::array<ares_socket_t, ARES_GETSOCK_MAXNUM> sockets{};
  const auto bits = static_cast<unsigned>(ares_getsock(channel, sockets.data(), ARES_GETSOCK_MAXNUM));
  for (unsigned n = 0; n < ARES_GETSOCK_MAXNUM; ++n) {
    const int events = (ARES_GETSOCK_READABLE(bits, n) ? POLLIN : 0) | (ARES_GETSOCK_WRITABLE(bits, n) ? POLLOUT : 0);
    if (events != 0) out.push_back({sockets[n], static_cast<short>(events), 0});
  }
}

Deadline NextRetry(ares_channeldata* channel, platform::Instant now) {
  timeval room{};
  const timeval* left = ares_timeout(channel, nullptr, &room);
  if (left == nullptr) return Deadline::Never();
  return Deadline::After(now, std::chrono::seconds(left->tv_sec) + std::chrono::microseconds(left->tv_usec));
}

void LetGoOn(ares_channeldata* channel, std::span<const pollfd> polled) {
  bool any = false;
  for (const pollfd& one : polled) {
    if (one.revents == 0) continue;
    any = true;
    const bool readable = (one.revents & (POLLIN | POLLERR | POLLHUP)) != 0;
    ares_process_fd(channel, readable ? one.fd : ARES_SOCKET_BAD,
                    (one.revents & POLLOUT) != 0 ? one.fd : ARES_SOCKET_BAD);
  }
  if (!any) ares_process_fd(channel, ARES_SOCKET_BAD, ARES_SOCKET_BAD);
}

Result<bool> DriveChannel(ares_channeldata* channel, const Patience& patience, ares_channeldata* second) {
  std::vector<pollfd> sockets;
  Deadline until = patience.deadline;
  const auto now = patience.clock.Monotonic();
  for (ares_channeldata* one : {channel, second}) {
    if (one == nullptr) continue;
    AddSockets(one, sockets);
    until = Earlier(until, NextRetry(one, now));
  }
  const auto waited = WaitAny(sockets, patience, until);
  if (!waited) return waited.error();
  if (patience.deadline.Passed(patience.clock.Monotonic())) return false;
  LetGoOn(channel, sockets);
  if (second != nullptr) LetGoOn(second, sockets);
  return true;
}

}  // namespace quillcast::net
