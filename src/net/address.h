// Internet addresses as values: parsed from text, written as text, handed to the system.
#pragma once

#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillcast::net {

// What is connected to and listened on; an address of another family is passed over, see FromSystem.
enum class Family { kIpv4, kIpv6 };

// Compared byte by byte: ::ffff:127.0.0.1 is another address than 127.0.0.1, though IsLoopback knows both.
struct IpAddress {
  Family family = Family::kIpv4;
  std::array<std::uint8_t, 16> bytes{};  // network order; the first four for IPv4
  std::uint32_t scope = 0;               // the interface of a link-local IPv6 address

  bool operator==(const IpAddress&) const = default;
};

// "127.0.0.1", "::1", "fe80::1%eth0", "fe80::1%2"; also "[::1]". Nothing for anything else, an interface that is not
// there included: no short or octal forms of IPv4.
std::optional<IpAddress> ParseIpAddress(std::string_view text);

// The inverse of ParseIpAddress, without brackets and without the interface.
std::string ToString(const IpAddress& address);

// An IPv4 address that came as ::ffff:a.b.c.d, as what it is; any other as it stands.
IpAddress Unmapped(const IpAddress& address);

// 127.0.0.0/8 and ::1, also as an IPv4 address in IPv6 clothes (::ffff:127.0.0.1).
bool IsLoopback(const IpAddress& address);

// Whether the first `bits` of two addresses of one family agree.
bool InNetwork(const IpAddress& address, const IpAddress& network, int bits);

// What stands for a host without a name in HELO and EHLO (RFC 5321 4.1.3): "[127.0.0.1]", "[IPv6:::1]".
std::string AddressLiteral(const IpAddress& address);

// One end of a TCP connection. Port 0: any that is free, to a listener.
struct Endpoint {
  IpAddress address;
  std::uint16_t port = 0;

  bool operator==(const Endpoint&) const = default;
};

// "127.0.0.1:25", "[::1]:25".
std::string ToString(const Endpoint& endpoint);

// A server as a person names it: by a name, in any script, or by an address.
struct HostPort {
  std::string host;  // without brackets
  std::uint16_t port = 0;

  bool operator==(const HostPort&) const = default;
};

// "host:port", "[v6]:port"; the inverse of ParseHostPort.
std::string ToString(const HostPort& server);

// "host", "host:port", "[v6]", "[v6]:port" or a bare IPv6 address, with its interface where it has one. Nothing when
// the host is empty, or the port is not a number from 1 to 65535.
std::optional<HostPort> ParseHostPort(std::string_view text, std::uint16_t default_port);

// The system's form of an endpoint.
struct SocketAddress {
  sockaddr_storage storage{};
  socklen_t length = 0;

  // For connect(2) and bind(2), with `length`.
  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
};
// `length` is that of the family's own structure.
SocketAddress ToSystem(const Endpoint& endpoint);
// Nothing for a family that is neither IPv4 nor IPv6.
std::optional<Endpoint> FromSystem(const sockaddr* address);

// Both ends of a connected socket; an empty endpoint where the system does not know.
Endpoint LocalEndpoint(int socket);
Endpoint PeerEndpoint(int socket);

}  // namespace quillcast::net
