#include "net/address.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/text.h"

namespace quillcast::net {
namespace {

constexpr std::array<std::uint8_t, 12> kMappedPrefix{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};

std::optional<std::uint16_t> ParsePort(std::string_view text) {
  const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
  const auto number = digits ? platform::ParseWholeNumber(text) : std::nullopt;
  if (!number || *number < 1 || *number > 65535) return {};
  return static_cast<std::uint16_t>(*number);
}

// An interface as its number (RFC 4007 11.2); 0 for what is none.
std::uint32_t InterfaceNumber(std::string_view text) {
  const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
  const auto number = digits ? platform::ParseWholeNumber(text) : std::nullopt;
  std::array<char, IF_NAMESIZE> name{};
  if (!number || *number > std::numeric_limits<int>::max()) return 0;
  const auto index = static_cast<std::uint32_t>(*number);
  return ::if_indextoname(index, name.data()) != nullptr ? index : 0;
}

// As ToString, with the interface where the address has one.
std::string WithInterface(const IpAddress& address) {
  std::array<char, IF_NAMESIZE> name{};
  if (address.scope == 0 || ::if_indextoname(address.scope, name.data()) == nullptr) return ToString(address);
  return ToString(address) + "%" + name.data();
}

using SystemName = int (*)(int, sockaddr*, socklen_t*);

Endpoint NameOf(int socket, SystemName name) {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  auto* address = reinterpret_cast<sockaddr*>(&storage);
  if (name(socket, address, &length) != 0) return {};
  return FromSystem(address).value_or(Endpoint{});
}

}  // namespace

std::optional<IpAddress> ParseIpAddress(std::string_view text) {
  if (text.size() > 2 && text.front() == '[' && text.back() == ']') text = text.substr(1, text.size() - 2);
  if (text.find('\0') != std::string_view::npos) return {};
  IpAddress address;
  const std::string whole(text);
  if (::inet_pton(AF_INET, whole.c_str(), address.bytes.data()) == 1) return address;
  address.family = Family::kIpv6;
  const auto percent = whole.find('%');
  if (percent != std::string::npos) {
    const char* interface = whole.c_str() + percent + 1;
    address.scope = ::if_nametoindex(interface);
    if (address.scope == 0) address.scope = InterfaceNumber(interface);
    if (address.scope == 0) return {};
  }
  if (::inet_pton(AF_INET6, whole.substr(0, percent).c_str(), address.bytes.data()) == 1) return address;
  return {};
}

std::string ToString(const IpAddress& address) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const int family = address.family == Family::kIpv4 ? AF_INET : AF_INET6;
  ::inet_ntop(family, address.bytes.data(), text.data(), text.size());
  return text.data();
}

IpAddress Unmapped(const IpAddress& address) {
  if (address.family == Family::kIpv4) return address;
  if (!std::equal(kMappedPrefix.begin(), kMappedPrefix.end(), address.bytes.begin())) return address;
  IpAddress v4;
  std::copy_n(address.bytes.begin() + kMappedPrefix.size(), 4, v4.bytes.begin());
  return v4;
}

bool IsLoopback(const IpAddress& address) {
  const IpAddress plain = Unmapped(address);
  if (plain.family == Family::kIpv4) return plain.bytes[0] == 127;
  IpAddress one{Family::kIpv6, {}, plain.scope};
  one.bytes[15] = 1;
  return plain == one;
}

bool InNetwork(const IpAddress& address, const IpAddress& network, int bits) {
  if (address.family != network.family) return false;
  const auto whole = static_cast<std::size_t>(bits / 8);
  if (!std::equal(address.bytes.begin(), address.bytes.begin() + static_cast<std::ptrdiff_t>(whole),
                  network.bytes.begin())) {
    return false;
  }
  const int rest = bits % 8;
  return rest == 0 || (address.bytes[whole] ^ network.bytes[whole]) >> (8 - rest) == 0;
}

std::string AddressLiteral(const IpAddress& address) {
  const IpAddress plain = Unmapped(address);
  return (plain.family == Family::kIpv4 ? "[" : "[IPv6:") + ToString(plain) + "]";
}

std::string ToString(const Endpoint& endpoint) {
  const std::string address = ToString(endpoint.address);
  const bool v4 = endpoint.address.family == Family::kIpv4;
  return (v4 ? address : "[" + address + "]") + ":" + std::to_string(endpoint.port);
}

std::string ToString(const HostPort& server) {
  const bool v6 = server.host.find(':') != std::string::npos;
  return (v6 ? "[" + server.host + "]" : server.host) + ":" + std::to_string(server.port);
}

std::optional<HostPort> ParseHostPort(std::string_view text, std::uint16_t default_port) {
  text = platform::Trim(text);
  if (text.empty()) return {};
  if (const auto address = ParseIpAddress(text)) return HostPort{WithInterface(*address), default_port};
  const auto colon = text.rfind(':');
  if (colon == std::string_view::npos) return HostPort{std::string(text), default_port};
  const auto port = ParsePort(text.substr(colon + 1));
  std::string_view host = text.substr(0, colon);
  if (!port || host.empty()) return {};
  if (host.front() == '[') {
    const auto address = ParseIpAddress(host);
    if (!address) return {};
    return HostPort{WithInterface(*address), *port};
  }
  if (host.find(':') != std::string_view::npos) return {};
  return HostPort{std::string(host), *port};
}

SocketAddress ToSystem(const Endpoint& endpoint) {
  SocketAddress out;
  if (endpoint.address.family == Family::kIpv4) {
    sockaddr_in v4{};
    v4.sin_family = AF_INET;
    v4.sin_port = htons(endpoint.port);
    std::memcpy(&v4.sin_addr, endpoint.address.bytes.data(), sizeof v4.sin_addr);
    std::memcpy(&out.storage, &v4, sizeof v4);
    out.length = sizeof v4;
  } else {
    sockaddr_in6 v6{};
    v6.sin6_family = AF_INET6;
    v6.sin6_port = htons(endpoint.port);
    v6.sin6_scope_id = endpoint.address.scope;
    std::memcpy(&v6.sin6_addr, endpoint.address.bytes.data(), sizeof v6.sin6_addr);
    std::memcpy(&out.storage, &v6, sizeof v6);
    out.length = sizeof v6;
  }
  return out;
}

std::optional<Endpoint> FromSystem(const sockaddr* address) {
  Endpoint out;
  if (address->sa_family == AF_INET) {
    sockaddr_in v4{};
    std::memcpy(&v4, address, sizeof v4);
    std::memcpy(out.address.bytes.data(), &v4.sin_addr, sizeof v4.sin_addr);
    out.port = ntohs(v4.sin_port);
    return out;
  }
  if (address->sa_family != AF_INET6) return {};
  sockaddr_in6 v6{};
  std::memcpy(&v6, address, sizeof v6);
  out.address.family = Family::kIpv6;
  out.address.scope = v6.sin6_scope_id;
  std::memcpy(out.address.bytes.data(), &v6.sin6_addr, sizeof v6.sin6_addr);
  out.port = ntohs(v6.sin6_port);
  return out;
}

Endpoint LocalEndpoint(int socket) { return NameOf(socket, ::getsockname); }
Endpoint PeerEndpoint(int socket) { return NameOf(socket, ::getpeername); }

}  // namespace quillcast::net
