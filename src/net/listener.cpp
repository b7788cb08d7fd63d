#include "net/listener.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "platform/text.h"

namespace quillcast::net {
namespace {

union ListenAddress {
  sockaddr any;
  sockaddr_in v4;
  sockaddr_in6 v6;
};

socklen_t SizeOf(const ListenAddress& address) {
  return address.any.sa_family == AF_INET6 ? sizeof address.v6 : sizeof address.v4;
}

std::optional<ListenAddress> ParseAddress(std::string_view text) {
  const auto colon = text.rfind(':');
  if (colon == std::string_view::npos) return {};
  const auto port = platform::ParseWholeNumber(text.substr(colon + 1));
  if (!port || *port > 65535) return {};
  std::string host(text.substr(0, colon));

  ListenAddress address{};
  if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
    host = host.substr(1, host.size() - 2);
    address.v6.sin6_family = AF_INET6;
    address.v6.sin6_port = htons(static_cast<std::uint16_t>(*port));
    if (::inet_pton(AF_INET6, host.c_str(), &address.v6.sin6_addr) != 1) return {};
  } else {
    address.v4.sin_family = AF_INET;
    address.v4.sin_port = htons(static_cast<std::uint16_t>(*port));
    if (::inet_pton(AF_INET, host.c_str(), &address.v4.sin_addr) != 1) return {};
  }
  return address;
}

std::string Format(const ListenAddress& address) {
  std::array<char, INET6_ADDRSTRLEN> host{};
  if (address.any.sa_family == AF_INET6) {
    ::inet_ntop(AF_INET6, &address.v6.sin6_addr, host.data(), host.size());
    return fmt::format("[{}]:{}", host.data(), ntohs(address.v6.sin6_port));
  }
  ::inet_ntop(AF_INET, &address.v4.sin_addr, host.data(), host.size());
  return fmt::format("{}:{}", host.data(), ntohs(address.v4.sin_port));
}

bool IsLoopback(const ListenAddress& address) {
  if (address.any.sa_family == AF_INET) return (ntohl(address.v4.sin_addr.s_addr) >> 24) == 127;
  const in6_addr& v6 = address.v6.sin6_addr;
  return IN6_IS_ADDR_LOOPBACK(&v6) || (IN6_IS_ADDR_V4MAPPED(&v6) && v6.s6_addr[12] == 127);
}

Error ListenError(std::string_view address, int error_number) {
  const Sentence what = Say("Cannot listen on {}: {}.", address, std::strerror(error_number));
  switch (error_number) {
    case EADDRINUSE:
      return {Failure::kUnavailable, what, "Another program listens there; choose another port, or 0 for a free one."};
    case EACCES:
    case EPERM:
      return {Failure::kNotPermitted, what, "Choose a port above 1023."};
    case EADDRNOTAVAIL:
      return {Failure::kUnavailable, what, "Choose an address of this machine."};
    default:
      return {Failure::kUnavailable, what};
  }
}

// Replies are gathered into whole writes already, so waiting for more (Nagle) would only delay them. Accepted sockets
// inherit it.
bool Prepare(int fd) {
  const int on = 1;
  return ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
         ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on) == 0;
}

}  // namespace

bool IsLoopbackAddress(std::string_view address_and_port) {
  const auto address = ParseAddress(address_and_port);
  return address && IsLoopback(*address);
}

Result<Listener> Listener::Open(std::string_view address_and_port) {
  auto address = ParseAddress(address_and_port);
  if (!address) {
    return Error{Failure::kUsage, Say("\"{}\" is not an address to listen on.", address_and_port),
                 "Write an IP address and a port, as in 127.0.0.1:2525 or [::1]:2525."};
  }
  platform::UniqueFd fd(::socket(address->any.sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  socklen_t size = SizeOf(*address);
  if (!fd || !Prepare(fd.get()) || ::bind(fd.get(), &address->any, size) != 0 || ::listen(fd.get(), SOMAXCONN) != 0 ||
      ::getsockname(fd.get(), &address->any, &size) != 0) {
    return ListenError(address_and_port, errno);
  }
  return Listener(std::move(fd), Format(*address));
}

Result<std::optional<Listener::Accepted>> Listener::Accept() {
  while (true) {
    ListenAddress peer{};
    socklen_t size = sizeof peer;
    platform::UniqueFd fd(::accept4(fd_.get(), &peer.any, &size, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (fd) return std::optional<Accepted>(Accepted{std::move(fd), Format(peer), IsLoopback(peer)});
    if (errno == EAGAIN || errno == EWOULDBLOCK) return std::optional<Accepted>();
    if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS) {
      return Error{Failure::kTryAgain, Say("Cannot take a connection: {}.", std::strerror(errno))};
    }
    // Anything else is about that one connection, which is gone (accept(2)); the next one may be well.
  }
}

}  // namespace quillcast::net
