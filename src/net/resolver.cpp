#include "net/resolver.h"

#include <ares.h>
#include <fmt/format.h>
#include <netdb.h>

#include <utility>

#include "net/idna.h"
#include "platform/text.h"

namespace quillcast::net {
namespace {

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

struct Resolver::Answer {
  bool done = false;
  int status = ARES_SUCCESS;
  std::vector<IpAddress> addresses;
};

Resolver::Resolver() : answer_(std::make_unique<Answer>()) {}
Resolver::~Resolver() = default;

void Resolver::Keep(void* argument, int status, int /*timeouts*/, ares_addrinfo* result) {
  auto& answer = *static_cast<Answer*>(argument);
  answer.done = true;
  answer.status = status;
  if (result == nullptr) return;
  for (const ares_addrinfo_node* node = result->nodes; node != nullptr; node = node->ai_next) {
    if (const auto endpoint = FromSystem(node->ai_addr)) answer.addresses.push_back(endpoint->address);
  }
  ares_freeaddrinfo(result);
}

Result<void> Resolver::Open() {
  if (channel_) return {};
  ares_channel channel = nullptr;
  const int status = ares_init(&channel);
  if (status != ARES_SUCCESS) return Error{Failure::kInternal, Say("No resolver: {}.", ares_strerror(status))};
  channel_.reset(channel);
  return {};
}

void Resolver::Begin(const std::string& host) {
  host_ = host;
  known_.reset();
  if (const auto address = ParseIpAddress(host)) {
    known_ = std::vector{*address};
    return;
  }
  const auto name = AsciiHost(host);
  if (!name) {
    known_ = name.error();
  } else if (IsLocalhost(*name)) {
    known_ = LoopbackAddresses();
  } else if (auto opened = Open(); !opened) {
    known_ = opened.error();
  } else {
    *answer_ = {};
    ares_addrinfo_hints hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    ares_getaddrinfo(channel_.get(), name->c_str(), nullptr, &hints, Keep, answer_.get());
  }
}

std::optional<Resolver::Found> Resolver::Step() {
  if (known_) return std::exchange(known_, {});
  if (!answer_->done) {
    std::vector<pollfd> sockets;
    WaitFor(sockets);
    IgnoreErrors(::poll(sockets.data(), sockets.size(), 0));  // then none of them is ready
    LetGoOn(channel_.get(), sockets);
  }
  if (!answer_->done) return {};
  if (!answer_->addresses.empty()) return std::move(answer_->addresses);
  return NotFound(host_, answer_->status == ARES_SUCCESS ? ARES_ENODATA : answer_->status);
}

void Resolver::WaitFor(std::vector<pollfd>& out) const {
  if (channel_) AddSockets(channel_.get(), out);
}

Deadline Resolver::Again(platform::Instant now) const {
  return channel_ ? NextRetry(channel_.get(), now) : Deadline::Never();
}

Error Resolver::Late() {
  if (channel_) ares_cancel(channel_.get());  // calls Keep at once
  return TookTooLong(host_);
}

Resolver::Found Resolver::Resolve(const std::string& host, const Patience& patience) {
  Begin(host);
  for (;;) {
    if (auto found = Step()) return *std::move(found);
    const auto driven = DriveChannel(channel_.get(), patience);
    if (driven && *driven) continue;
    Error late = Late();
    if (!driven) return driven.error();
    return late;
  }
}

}  // namespace quillcast::net
