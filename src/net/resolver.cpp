#include "net/resolver.h"

#include <ares.h>
#include <fmt/format.h>
#include <netdb.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "net/idna.h"
#include "net/resolver_file.h"
#include "platform/text.h"

namespace quillcast::net {
namespace {

constexpr std::chrono::milliseconds kLate{300};  // that both families are waited for before each is asked for alone
constexpr std::chrono::seconds kOther{1};        // that one of them is waited for when the other has answered

bool IsLocalhost(std::string_view host) {
  host = WithoutRootDot(host);
  const std::string lower = platform::AsciiLower(host);
  return lower == "localhost" || lower.ends_with(".localhost");
}

// IPv4 first: what listens on this host only often does so on 127.0.0.1 alone.
std::vector<IpAddress> LoopbackAddresses() { return {*ParseIpAddress("127.0.0.1"), *ParseIpAddress("::1")}; }

constexpr const char* kCheckSpelling = "Check the spelling of the server's name.";
constexpr const char* kCheckNetwork = "Check that this computer is connected to the network.";

// What a name server says in place of an answer (RFC 1035 4.1.1); the first and the fourth are answers.
constexpr std::array<std::string_view, 6> kRefusals = {"", "FORMERR", "SERVFAIL", "", "NOTIMP", "REFUSED"};

std::string RefusalOf(unsigned code) {
  return code < kRefusals.size() ? std::string(kRefusals[code]) : "code " + std::to_string(code);
}

int OpenChannel(AresChannel& out, int options_given) {
  ares_options options{};
  options.timeout = kFirstWait;
  ares_channel channel = nullptr;
  const int status = ares_init_options(&channel, &options, options_given);
  if (status == ARES_SUCCESS) out.reset(channel);
  return status;
}

std::size_t NumberOfServers(ares_channeldata* channel) {
  ares_addr_port_node* first = nullptr;
  IgnoreErrors(ares_get_servers_ports(channel, &first));  // none are counted then
  std::size_t count = 0;
  for (const auto* node = first; node != nullptr; node = node->next) ++count;
  ares_free_data(first);
  return count;
}

}  // namespace

bool IsLoopbackHost(std::string_view host) {
  if (const auto address = ParseIpAddress(host)) return IsLoopback(*address);
  const auto name = AsciiHost(host);
  return name && IsLocalhost(*name);
}

struct Resolver::Question {
  bool done = false;
  int status = ARES_SUCCESS;
  std::vector<IpAddress> addresses;

  bool Found() const { return done && !addresses.empty(); }
  bool HasNone() const {
    const bool is_answer = status == ARES_SUCCESS || status == ARES_ENOTFOUND || status == ARES_ENODATA;
    return done && is_answer && addresses.empty();
  }
};

// The library gives nothing of a name before both families are answered, or given up after more than a minute. Where
// that takes its time each family is asked for alone as well.
struct Resolver::Questions {
  Question both;
  Question v4;
  Question v6;
  platform::Instant begun{};
  std::optional<platform::Instant> apart = {};  // since when each is asked for alone
  std::optional<platform::Instant> found = {};  // when the first of these had an answer

  std::vector<IpAddress> Addresses() const;
  int Status() const;
};

// Of two that were asked for alone nothing says which is better, so that they take turns, IPv6 first (RFC 8305 4).
std::vector<IpAddress> Resolver::Questions::Addresses() const {
  if (both.Found()) return both.addresses;
  std::vector<IpAddress> addresses;
  for (std::size_t n = 0; n < std::max(v4.addresses.size(), v6.addresses.size()); ++n) {
    if (n < v6.addresses.size()) addresses.push_back(v6.addresses[n]);
    if (n < v4.addresses.size()) addresses.push_back(v4.addresses[n]);
  }
  return addresses;
}

// Why there is no address. A family that could not be found out tells more than one that is not there: the name may
// well have one.
int Resolver::Questions::Status() const {
  if (!v4.done || !v6.done) return both.status == ARES_SUCCESS ? ARES_ENODATA : both.status;
  for (const Question* one : {&v4, &v6}) {
    if (!one->HasNone()) return one->status;
  }
  return v4.status == ARES_ENOTFOUND && v6.status == ARES_ENOTFOUND ? ARES_ENOTFOUND : ARES_ENODATA;
}

Resolver::Resolver(std::vector<Endpoint> servers)
    : servers_(std::move(servers)), asked_(std::make_unique<Questions>()) {}
Resolver::~Resolver() = default;

void Resolver::Keep(void* argument, int status, int /*timeouts*/, ares_addrinfo* result) {
  auto& question = *static_cast<Question*>(argument);
  question.done = true;
  question.status = status;
  if (result == nullptr) return;
  for (const ares_addrinfo_node* node = result->nodes; node != nullptr; node = node->ai_next) {
    if (const auto endpoint = FromSystem(node->ai_addr)) question.addresses.push_back(endpoint->address);
  }
  ares_freeaddrinfo(result);
}

Result<void> Resolver::Open() {
  if (channel_) return {};
  const std::vector<Endpoint> servers = servers_.empty() ? ServersBehindInterfaces() : servers_;
  AresChannel opened;
  int status = OpenChannel(opened, 0);
  // With another to be asked next; an answer over TCP is waited for no longer, and a single server has no other chance.
  if (status == ARES_SUCCESS && (servers.empty() ? NumberOfServers(opened.get()) : servers.size()) > 1) {
    status = OpenChannel(opened, ARES_OPT_TIMEOUTMS);
  }
  if (status != ARES_SUCCESS) return Error{Failure::kInternal, Say("No resolver: {}.", ares_strerror(status))};
  if (!servers.empty() && !SetServers(opened.get(), servers))
    return Error{Failure::kInternal, "No resolver: no memory."};
  watch_.Attach(opened.get());
  channel_ = std::move(opened);
  return {};
}

void Resolver::Ask(Question& question, int family) {
  ares_addrinfo_hints hints{};
  hints.ai_family = family;
  hints.ai_socktype = SOCK_STREAM;
  ares_getaddrinfo(channel_.get(), name_.c_str(), nullptr, &hints, Keep, &question);
}

void Resolver::Begin(const std::string& host, platform::Instant now) {
  host_ = host;
  known_.reset();
  fault_ = NameFault::kNone;
  watch_.Forget();
  if (const auto address = ParseIpAddress(host)) {
    known_ = std::vector{*address};
    return;
  }
  const auto name = AsciiHost(host);
  if (!name) {
    fault_ = NameFault::kNoSuchName;
    known_ = name.error();
  } else if (IsLocalhost(*name)) {
    known_ = LoopbackAddresses();
  } else if (auto opened = Open(); !opened) {
    known_ = opened.error();
  } else {
    name_ = *name;
    *asked_ = {};
    asked_->begun = now;
    Ask(asked_->both, AF_UNSPEC);
  }
}

// The library says of servers that fail what it says of those that are not there.
Error Resolver::NotFound(int status) {
  const unsigned code = watch_.failure_code();
  const bool knows = status == ARES_ENODATA;
  if (status == ARES_ETIMEOUT) {
    fault_ = NameFault::kNoAnswer;
    return {Failure::kTimedOut, Say("The address of {} was not found in time.", host_),
            "Check that the name server of this computer can be reached."};
  }
  if (status == ARES_EBADNAME || status == ARES_ENOTFOUND || (knows && code < kRefusals.size())) {
    fault_ = knows ? NameFault::kNoAddress : NameFault::kNoSuchName;
    return {Failure::kNoInput, Say("The address of {} was not found: {}.", host_, ares_strerror(status)),
            kCheckSpelling};
  }
  if (status == ARES_ECONNREFUSED && code == 0 && watch_.error_number() != 0) {
    fault_ = NameFault::kNoServer;
    return {Failure::kUnavailable,
            Say("The name server of this computer cannot be reached: {}.", std::strerror(watch_.error_number())),
            kCheckNetwork};
  }
  fault_ = NameFault::kServersFailed;
  const std::string unread = status == ARES_ECONNREFUSED ? "no answer that can be used" : ares_strerror(status);
  const std::string why = code != 0 ? RefusalOf(code) : unread;
  return {Failure::kUnavailable,
          Say("The name server of this computer failed when it was asked for {} ({}).", host_, why),
          "Check that this computer is connected to the network, or try again later."};
}

// Whether the question for both has its whole answer: it tells no more than how that for one of them ended, which may
// be that there is no address, though the other could not be found out.
bool Resolver::IsDecided() const {
  const bool one_failed = asked_->both.HasNone() && watch_.failure_code() != 0;
  return asked_->both.done && !one_failed;
}

void Resolver::AskApart(platform::Instant now) {
  const bool is_early = !asked_->both.done && now < asked_->begun + kLate;
  if (IsDecided() || asked_->apart || is_early) return;
  asked_->apart = now;
  Ask(asked_->v4, AF_INET);
  Ask(asked_->v6, AF_INET6);
}

bool Resolver::IsEnough(platform::Instant now) const {
  const Questions& asked = *asked_;
  if (IsDecided() || (asked.v4.done && asked.v6.done)) return true;
  return asked.found && now >= *asked.found + kOther;
}

std::optional<Resolver::Found> Resolver::Step(platform::Instant now) {
  if (known_) return std::exchange(known_, {});
  if (!IsDecided()) {
    std::vector<pollfd> sockets;
    WaitFor(sockets);
    IgnoreErrors(::poll(sockets.data(), sockets.size(), 0));  // then none of them is ready
    LetGoOn(channel_.get(), sockets);
  }
  AskApart(now);
  if (!asked_->found && (asked_->v4.Found() || asked_->v6.Found())) asked_->found = now;
  if (!IsEnough(now)) return {};
  auto addresses = asked_->Addresses();
  const int status = asked_->Status();
  ares_cancel(channel_.get());  // calls Keep at once
  if (!addresses.empty()) return addresses;
  return NotFound(status);
}

void Resolver::WaitFor(std::vector<pollfd>& out) const {
  if (channel_) AddSockets(channel_.get(), out);
}

Deadline Resolver::Again(platform::Instant now) const {
  if (!channel_) return Deadline::Never();
  Deadline again = NextRetry(channel_.get(), now);
  if (!asked_->apart) again = Earlier(again, Deadline::After(asked_->begun, kLate));
  if (asked_->found) again = Earlier(again, Deadline::After(*asked_->found, kOther));
  return again;
}

Resolver::Found Resolver::Late() {
  auto addresses = asked_->Addresses();
  if (channel_) ares_cancel(channel_.get());
  if (!addresses.empty()) return addresses;
  return NotFound(ARES_ETIMEOUT);
}

Resolver::Found Resolver::Resolve(const std::string& host, const Patience& patience) {
  std::vector<pollfd> sockets;
  Begin(host, patience.clock.Monotonic());
  for (;;) {
    const auto now = patience.clock.Monotonic();
    if (auto found = Step(now)) return *std::move(found);
    if (patience.deadline.Passed(now)) return Late();
    sockets.clear();
    WaitFor(sockets);
    const auto waited = WaitAny(sockets, patience, Earlier(Again(now), patience.deadline));
    if (waited) continue;
    ares_cancel(channel_.get());
    return waited.error();
  }
}

}  // namespace quillcast::net
