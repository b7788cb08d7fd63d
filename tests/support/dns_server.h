// A name server in a thread of the test, over UDP and TCP on one loopback port: with a zone of right answers, or with
// whatever bytes a test wants.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "net/address.h"
#include "net/dns/dns_answer.h"
#include "platform/file.h"

namespace quillcast::net {

inline std::string Octets(std::initializer_list<unsigned> values) {
  std::string out;
  for (const unsigned value : values) out += static_cast<char>(value);
  return out;
}
inline std::string WireNumber(unsigned value) { return Octets({value >> 8 & 255U, value & 255U}); }

// "mx.example" as length, label, length, label, 0. The root is "".
inline std::string WireName(std::string_view name) {
  std::string out;
  while (!name.empty()) {
    const std::string_view label = name.substr(0, name.find('.'));
    out += static_cast<char>(label.size());
    out += label;
    name.remove_prefix(std::min(name.size(), label.size() + 1));
  }
  return out + '\0';
}

inline constexpr unsigned kAliasType = 5;

// A record of a zone, its content as the wire has it.
struct ZoneRecord {
  std::string owner;
  unsigned type;
  std::string content;
};
inline ZoneRecord AddressRecord(const std::string& owner, const char* text) {
  const IpAddress address = *ParseIpAddress(text);
  const bool v4 = address.family == Family::kIpv4;
  return {owner, v4 ? 1U : 28U, std::string(address.bytes.begin(), address.bytes.begin() + (v4 ? 4 : 16))};
}
inline ZoneRecord MxRecord(const std::string& owner, unsigned preference, std::string_view host) {
  return {owner, 15, WireNumber(preference) + WireName(host)};
}
inline ZoneRecord TxtRecord(const std::string& owner, const std::vector<std::string>& strings) {
  std::string content;
  for (const std::string& one : strings) content += static_cast<char>(one.size()) + one;
  return {owner, 16, content};
}
inline ZoneRecord PtrRecord(const std::string& owner, std::string_view host) { return {owner, 12, WireName(host)}; }
inline ZoneRecord AliasRecord(const std::string& owner, std::string_view to) {
  return {owner, kAliasType, WireName(to)};
}

// What a query asks for: its name in small letters, and the octets of its question section.
struct ZoneQuestion {
  std::string name;
  unsigned type = 0;
  std::string section;
};
inline ZoneQuestion QuestionOf(const std::string& query) {
  ZoneQuestion question;
  std::size_t at = 12;
  for (; at < query.size() && query[at] != 0; at += static_cast<unsigned char>(query[at]) + 1U) {
    if (!question.name.empty()) question.name += '.';
    for (const char c : query.substr(at + 1, static_cast<unsigned char>(query[at])))
      question.name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  question.type = static_cast<unsigned char>(query.at(at + 2));
  question.section = query.substr(12, at + 5 - 12);
  return question;
}

// A reply to a query: `code` as RFC 1035 4.1.1 has it, with the records given, whoever owns them; `authority` in the
// section behind.
inline std::string ReplyTo(const std::string& query, unsigned code, std::vector<ZoneRecord> records, bool cut = false,
                           const std::vector<ZoneRecord>& authority = {}) {
  std::string reply = query.substr(0, 2) + Octets({cut ? 0x87U : 0x85U, 0x80U | code}) + WireNumber(1) +
                      WireNumber(static_cast<unsigned>(records.size())) +
                      WireNumber(static_cast<unsigned>(authority.size())) + WireNumber(0) + QuestionOf(query).section;
  const std::string name = QuestionOf(query).name;
  records.insert(records.end(), authority.begin(), authority.end());
  for (const ZoneRecord& one : records) {
    reply += (one.owner == name ? Octets({0xC0, 12}) : WireName(one.owner)) + WireNumber(one.type) + WireNumber(1) +
             Octets({0, 0, 1, 0}) + WireNumber(static_cast<unsigned>(one.content.size())) + one.content;
  }
  return reply;
}

// Answers from a zone: the records of the name and, through its aliases, of where they lead; NXDOMAIN for a name that
// has none; cut when the answer does not fit into 512 octets over UDP.
inline std::vector<std::string> AnswerFrom(const std::vector<ZoneRecord>& zone, const std::string& query, bool tcp) {
  const ZoneQuestion question = QuestionOf(query);
  std::vector<ZoneRecord> found;
  bool known = false;
  for (const ZoneRecord& one : zone) {
    if (one.owner != question.name) continue;
    known = true;
    if (one.type == question.type || one.type == kAliasType) found.push_back(one);
  }
  std::string reply = ReplyTo(query, known ? 0 : 3, found);
  if (!tcp && reply.size() > 512) reply = ReplyTo(query, 0, {}, true);
  return {reply};
}

class DnsServer {
 public:
  // The messages that a query is answered with, none for silence; `tcp` tells how it came.
  using Answer = std::function<std::vector<std::string>(const std::string& query, bool tcp)>;

  explicit DnsServer(Answer answer) : answer_(std::move(answer)) { Start(); }
  // With a zone. Each answer is sent so long after its query, however many others wait at the same time.
  explicit DnsServer(std::vector<ZoneRecord> zone, std::chrono::milliseconds delay = {})
      : answer_([zone = std::move(zone)](const std::string& query, bool tcp) { return AnswerFrom(zone, query, tcp); }),
        delay_(delay) {
    Start();
  }
  ~DnsServer() {
    stop_ = true;
    ::shutdown(tcp_.get(), SHUT_RDWR);
    thread_.join();
  }
  DnsServer(const DnsServer&) = delete;
  DnsServer& operator=(const DnsServer&) = delete;

  Endpoint endpoint() const { return {*ParseIpAddress("127.0.0.1"), port_}; }
  int queries() const { return queries_; }

 private:
  using Moment = std::chrono::steady_clock::time_point;
  struct Waiting {
    Moment due;
    std::string message;
    sockaddr_in to;
  };

  void Start() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    EXPECT_EQ(::bind(tcp_.get(), generic, length), 0);
    ::getsockname(tcp_.get(), generic, &length);
    EXPECT_EQ(::bind(udp_.get(), generic, length), 0);
    EXPECT_EQ(::listen(tcp_.get(), 16), 0);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { Loop(); });
  }

  void Loop() {
    std::vector<Waiting> waiting;
    while (!stop_) {
      pollfd ready[] = {{udp_.get(), POLLIN, 0}, {tcp_.get(), POLLIN, 0}};
      ::poll(ready, 2, waiting.empty() ? 50 : 1);
      if (ready[0].revents != 0) TakeDatagram(waiting);
      if (ready[1].revents != 0 && !stop_) ServeConnection();
      const auto now = std::chrono::steady_clock::now();
      std::erase_if(waiting, [&](const Waiting& one) {
        if (one.due > now) return false;
        ::sendto(udp_.get(), one.message.data(), one.message.size(), 0, reinterpret_cast<const sockaddr*>(&one.to),
                 sizeof one.to);
        return true;
      });
    }
  }

  void TakeDatagram(std::vector<Waiting>& waiting) {
    std::string query(4096, '\0');
    sockaddr_in from{};
    socklen_t length = sizeof from;
    const auto count =
        ::recvfrom(udp_.get(), query.data(), query.size(), 0, reinterpret_cast<sockaddr*>(&from), &length);
    if (count <= 0) return;
    query.resize(static_cast<std::size_t>(count));
    ++queries_;
    for (std::string& message : answer_(query, false))
      waiting.push_back({std::chrono::steady_clock::now() + delay_, std::move(message), from});
  }

  // One query a connection. An answer is written octet by octet, each a packet of its own.
  void ServeConnection() {
    const platform::UniqueFd socket(::accept4(tcp_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    std::string query(4096, '\0');
    const auto count = socket ? ::recv(socket.get(), query.data(), query.size(), 0) : 0;
    if (count <= 2) return;
    ++queries_;
    for (const std::string& message : answer_(query.substr(2, static_cast<std::size_t>(count) - 2), true)) {
      const std::string framed = WireNumber(static_cast<unsigned>(message.size())) + message;
      for (const char c : framed) {
        if (::send(socket.get(), &c, 1, MSG_NOSIGNAL) != 1) return;
      }
    }
  }

  Answer answer_;
  std::chrono::milliseconds delay_{};
  platform::UniqueFd udp_{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
  platform::UniqueFd tcp_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  std::uint16_t port_ = 0;
  std::atomic<int> queries_ = 0;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

}  // namespace quillcast::net
