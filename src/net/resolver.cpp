#include "net/resolver.h"

#include <ares.h>
#include <fmt/format.h>
#include <netdb.h>

#include <array>

#include "net/idna.h"
#include "platform/text.h"

namespace quillcast::net {
namespace {

struct Answer {
  bool done = false;
  int status = ARES_SUCCESS;
  std::vector<IpAddress> addresses;
};

void Keep(void* argument, int status, int /*timeouts*/, ares_addrinfo* result) {
  auto& answer = *static_cast<Answer*>(argument);
  answer.done = true;
  answer.status = status;
  if (result == nullptr) return;
  for (const ares_addrinfo_node* node = result->nodes; node != nullptr; node = node->ai_next) {
    if (const auto endpoint = FromSystem(node->ai_addr)) answer.addresses.push_back(endpoint->address);
  }
  ares_freeaddrinfo(result);
}

bool IsLocalhost(std::string_view host) {
  host = WithoutRootDot(host);
  const std::string lower = platform::AsciiLower(host);
  return lower == "localhost" || lower.ends_with(".localhost");
}

// IPv4 first: what listens on this host only often does so on 127.0.0.1 alone.
std::vector<IpAddress> LoopbackAddresses() { return {*ParseIpAddress("127.0.0.1"), *ParseIpAddress("::1")}; }

struct Sockets {
  std::array<pollfd, ARES_GETSOCK_MAXNUM> descriptors{};
  std::size_t count = 0;
};

Sockets SocketsOf(ares_channel channel) {
  Sockets out;
  std::array<ares_socket_t, ARES_GETSOCK_MAXNUM> sockets{};
  const auto bits = static_cast<unsigned>(ares_getsock(channel, sockets.data(), ARES_GETSOCK_MAXNUM));
  for (unsigned n = 0; n < ARES_GETSOCK_MAXNUM; ++n) {
    const int events = (ARES_GETSOCK_READABLE(bits, n) ? POLLIN : 0) | (ARES_GETSOCK_WRITABLE(bits, n) ? POLLOUT : 0);
    if (events != 0) out.descriptors[out.count++] = {sockets[n], static_cast<short>(events), 0};
  }
  return out;
}

// When the library wants to be called again although nothing came, to ask the next server.
Deadline NextRetry(ares_channel channel, platform::Instant now) {
  timeval room{};
  const timeval* left = ares_timeout(channel, nullptr, &room);
  if (left == nullptr) return Deadline::Never();
  return Deadline::After(now, std::chrono::seconds(left->tv_sec) + std::chrono::microseconds(left->tv_usec));
}

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

Error TookTooLong(const std::string& host) {
  return {Failure::kTimedOut, Say("The address of {} was not found in time.", host),
          "Check that the name server of this computer can be reached."};
}

Error NotFound(const std::string& host, int status) {
  if (status == ARES_ETIMEOUT) return TookTooLong(host);
  return {Failure::kNoInput, Say("The address of {} was not found: {}.", host, ares_strerror(status)),
          "Check the spelling of the server's name."};
}

}  // namespace

bool IsLoopbackHost(std::string_view host) {
  if (const auto address = ParseIpAddress(host)) return IsLoopback(*address);
  const auto name = AsciiHost(host);
  return name && IsLocalhost(*name);
}

void Resolver::CloseChannel::operator()(ares_channeldata* channel) const { ares_destroy(channel); }

Resolver::Resolver() = default;

Result<void> Resolver::Open() {
  if (channel_) return {};
  ares_channel channel = nullptr;
  const int status = ares_init(&channel);
  if (status != ARES_SUCCESS) return Error{Failure::kInternal, Say("No resolver: {}.", ares_strerror(status))};
  channel_.reset(channel);
  return {};
}

Result<std::vector<IpAddress>> Resolver::Resolve(const std::string& host, const Patience& patience) {
  if (const auto address = ParseIpAddress(host)) return std::vector{*address};
  const auto name = AsciiHost(host);
  if (!name) return name.error();
  if (IsLocalhost(*name)) return LoopbackAddresses();
  if (auto opened = Open(); !opened) return opened.error();
  Answer answer;
  ares_addrinfo_hints hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  ares_getaddrinfo(channel_.get(), name->c_str(), nullptr, &hints, Keep, &answer);
  while (!answer.done) {
    Sockets sockets = SocketsOf(channel_.get());
    const auto now = patience.clock.Monotonic();
    const auto waited = WaitAny(std::span(sockets.descriptors).first(sockets.count), patience,
                                Earlier(patience.deadline, NextRetry(channel_.get(), now)));
    const bool late = patience.deadline.Passed(patience.clock.Monotonic());
    if (!waited || late) {
      ares_cancel(channel_.get());  // calls Keep at once: `answer` is not referred to any more
      if (!waited) return waited.error();
      return TookTooLong(host);
    }
    Process(channel_.get(), sockets);
  }
  if (answer.addresses.empty()) return NotFound(host, answer.status == ARES_SUCCESS ? ARES_ENODATA : answer.status);
  return std::move(answer.addresses);
}

}  // namespace quillcast::net
