#include "net/resolver.h"

#include <ares.h>
#include <fmt/format.h>
#include <netdb.h>

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
    const auto driven = DriveChannel(channel_.get(), patience);
    if (driven && *driven) continue;
    ares_cancel(channel_.get());  // calls Keep at once: `answer` is not referred to any more
    if (!driven) return driven.error();
    return TookTooLong(host);
  }
  if (answer.addresses.empty()) return NotFound(host, answer.status == ARES_SUCCESS ? ARES_ENODATA : answer.status);
  return std::move(answer.addresses);
}

}  // namespace quillcast::net
