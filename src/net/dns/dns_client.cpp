#include "net/dns/dns_client.h"

#include <ares.h>
#include <netinet/in.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "net/idna.h"
#include "net/resolver_file.h"
#include "net/socket_watch.h"
#include "platform/utf8.h"

namespace quillcast::net {
namespace {

constexpr int kTcpWait = 10'000;     // milliseconds; the handshake and a long answer, of a server that is there
constexpr int kTries = 3;            // of each server
constexpr int kDatagram = 1232;      // octets that no network cuts into pieces
constexpr int kMostQuestionsOn = 8;  // for one alias after the other

struct FreeServers {
  void operator()(ares_addr_port_node* servers) const { ares_free_data(servers); }
};

Endpoint ServerOf(const ares_addr_port_node& node) {
  Endpoint server;
  const bool v4 = node.family == AF_INET;
  server.address.family = v4 ? Family::kIpv4 : Family::kIpv6;
  std::memcpy(server.address.bytes.data(), &node.addr, v4 ? sizeof node.addr.addr4 : sizeof node.addr.addr6);
  server.port = node.udp_port != 0 ? static_cast<std::uint16_t>(node.udp_port) : kDnsPort;
  return server;
}

enum class Way { kUdp, kTcp };

// Nothing where the system has no memory for it.
AresChannel OpenChannel(std::vector<Endpoint>& servers, Way way) {
  if (servers.empty()) servers = SystemDnsServers();
  ares_options options{};
  // Of several servers the next is asked when one fails; of a single one the failure itself is the answer.
  options.flags = ARES_FLAG_EDNS | (servers.size() == 1 ? ARES_FLAG_NOCHECKRESP : 0);
  // The library would wait over TCP no longer than for a datagram: what is cut is asked for again by us.
  options.flags |= way == Way::kTcp ? ARES_FLAG_USEVC : ARES_FLAG_IGNTC;
  options.ednspsz = kDatagram;
  options.timeout = way == Way::kTcp ? kTcpWait : kFirstWait;
  options.tries = kTries;
  ares_channel channel = nullptr;
  if (ares_init_options(&channel, &options, ARES_OPT_FLAGS | ARES_OPT_EDNSPSZ | ARES_OPT_TIMEOUTMS | ARES_OPT_TRIES) !=
      ARES_SUCCESS) {
    return {};
  }
  AresChannel opened(channel);
  if (!SetServers(channel, servers)) return {};
  return opened;
}

// As the wire has it. Nothing for what cannot stand there.
std::optional<std::string> WireName(const std::string& name) {
  if (name.empty() || platform::HoldsControl(name)) return {};
  auto ascii = AsciiHost(name);
  if (!ascii) return {};
  return *std::move(ascii);
}

}  // namespace

struct DnsClient::Watch : SocketWatch {};

struct DnsClient::Pending {
  DnsQuestion question;
  Then then;
  Watch* watch = nullptr;
  std::uint64_t strays_before = 0;
  int questions_on = 0;
  bool asked_twice = false;
  bool over_tcp = false;
  bool cut = false;
  bool done = false;
  DnsAnswer answer = {};

  static void Keep(void* argument, int status, int timeouts, unsigned char* message, int size);
  void End(DnsOutcome outcome, int error_number = 0);
  void EndWithout(int status);
};

void DnsClient::Pending::End(DnsOutcome outcome, int error_number) {
  done = true;
  answer.outcome = outcome;
  answer.records.clear();  // of a message that was cut
  answer.name = question.name;
  answer.error_number = error_number;
}

// By what the library and the sockets say when no message answered the question.
void DnsClient::Pending::EndWithout(int status) {
  const bool heard_strays = watch->strays() > strays_before;
  switch (status) {
    case ARES_EBADNAME:
      return End(DnsOutcome::kBadName);
    case ARES_ETIMEOUT:
    case ARES_ECANCELLED:
      return End(heard_strays ? DnsOutcome::kMalformed : DnsOutcome::kNoAnswer);
    case ARES_ENOMEM:
      return End(DnsOutcome::kNoSocket, ENOMEM);
    default:
      break;
  }
  if (watch->error_number() != 0) return End(DnsOutcome::kNoSocket, watch->error_number());
  switch (watch->failure_code()) {
    case 2:
      return End(DnsOutcome::kServerFailed);
    case 5:
      return End(DnsOutcome::kRefused);
    default:
      return End(DnsOutcome::kMalformed);
  }
}

void DnsClient::Pending::Keep(void* argument, int status, int /*timeouts*/, unsigned char* message, int size) {
  auto& pending = *static_cast<Pending*>(argument);
  if (message == nullptr) return pending.EndWithout(status);
  pending.answer = ReadDnsAnswer({message, static_cast<std::size_t>(size)}, pending.question);
  pending.cut = size > 2 && (message[2] & 2U) != 0;
  pending.done = true;
}

std::optional<Endpoint> ParseDnsServer(std::string_view text) {
  const auto server = ParseHostPort(text, kDnsPort);
  if (!server) return {};
  const auto address = ParseIpAddress(server->host);
  if (!address) return {};
  return Endpoint{*address, server->port};
}

std::vector<Endpoint> SystemDnsServers() {
  if (auto servers = ServersBehindInterfaces(); !servers.empty()) return servers;
  ares_channel channel = nullptr;
  if (ares_init(&channel) != ARES_SUCCESS) return {};
  const AresChannel opened(channel);
  ares_addr_port_node* first = nullptr;
  IgnoreErrors(ares_get_servers_ports(channel, &first));  // none are found then
  const std::unique_ptr<ares_addr_port_node, FreeServers> owned(first);
  std::vector<Endpoint> servers;
  for (const auto* node = first; node != nullptr; node = node->next) servers.push_back(ServerOf(*node));
  return servers;
}

DnsClient::DnsClient(std::vector<Endpoint> servers)
    : servers_(std::move(servers)), watch_(std::make_unique<Watch>()), channel_(OpenChannel(servers_, Way::kUdp)) {
  if (channel_) watch_->Attach(channel_.get());
}

DnsClient::~DnsClient() = default;

void DnsClient::Send(Pending& pending, const std::string& name) {
  pending.question.name = name;
  pending.done = false;
  pending.cut = false;
  pending.strays_before = watch_->strays();
  const auto wire_name = WireName(name);
  if (!wire_name) return pending.End(DnsOutcome::kBadName);
  if (pending.over_tcp && !tcp_channel_) {
    tcp_channel_ = OpenChannel(servers_, Way::kTcp);
    if (tcp_channel_) watch_->Attach(tcp_channel_.get());
  }
  const AresChannel& channel = pending.over_tcp ? tcp_channel_ : channel_;
  if (!channel) return pending.End(DnsOutcome::kNoSocket, ENOMEM);
  pending.question.name = *wire_name;
  ares_query(channel.get(), wire_name->c_str(), kInternetClass, static_cast<int>(pending.question.type), Pending::Keep,
             &pending);
}

void DnsClient::Ask(DnsQuestion question, Then then) {
  const std::string name = question.name;
  pending_.push_back({std::move(question), std::move(then), watch_.get()});
  Send(pending_.back(), name);
}

// Whether what came is not the end of a question, which is then sent again.
bool DnsClient::GoesOn(Pending& one) {
  if (one.cut && !one.over_tcp) {
    one.over_tcp = true;
    Send(one, std::string(one.question.name));
    return !one.done;
  }
  if (one.answer.outcome == DnsOutcome::kNotUnderstood && !one.asked_twice) {
    // A server that does not know EDNS: the library asks again without, but the first only of those that are open.
    one.asked_twice = true;
    Send(one, std::string(one.question.name));
    return !one.done;
  }
  if (one.answer.outcome != DnsOutcome::kNoData || one.answer.name == WithoutRootDot(one.question.name)) return false;
  if (one.questions_on == kMostQuestionsOn) {
    one.answer.outcome = DnsOutcome::kMalformed;
    return false;
  }
  ++one.questions_on;
  one.over_tcp = false;
  Send(one, std::string(one.answer.name));
  return !one.done;
}

// Not from within the library's callback, so that whoever is told may ask further.
void DnsClient::Deliver() {
  for (auto one = pending_.begin(); one != pending_.end();) {
    if (!one->done || GoesOn(*one)) {
      ++one;
      continue;
    }
    std::list<Pending> told;
    told.splice(told.end(), pending_, one++);
    told.front().then(told.front().answer);
  }
}

void DnsClient::CancelAll() {
  if (channel_) ares_cancel(channel_.get());
  if (tcp_channel_) ares_cancel(tcp_channel_.get());
}

void DnsClient::Drop() {
  CancelAll();
  pending_.clear();
}

Result<void> DnsClient::Run(const Patience& patience) {
  for (Deliver(); !pending_.empty(); Deliver()) {
    const bool open = std::any_of(pending_.begin(), pending_.end(), [](const Pending& one) { return !one.done; });
    if (!open) continue;
    const auto driven = DriveChannel(channel_.get(), patience, tcp_channel_.get());
    if (!driven) {
      Drop();
      return driven.error();
    }
    if (!*driven) CancelAll();
  }
  return {};
}

Result<std::vector<DnsAnswer>> AskAll(std::span<const DnsQuestion> questions, std::vector<Endpoint> servers,
                                      const Patience& patience) {
  std::vector<DnsAnswer> answers(questions.size());
  DnsClient client(std::move(servers));
  for (std::size_t n = 0; n < questions.size(); ++n) {
    client.Ask(questions[n], [&answers, n](const DnsAnswer& answer) { answers[n] = answer; });
  }
  if (auto ran = client.Run(patience); !ran) return ran.error();
  return answers;
}

}  // namespace quillcast::net
