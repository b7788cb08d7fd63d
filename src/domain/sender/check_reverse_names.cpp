#include <algorithm>
#include <array>

#include "domain/sender/dmarc_record.h"
#include "domain/sender/sender_topics.h"
#include "domain/sender/spf_record.h"

namespace quillcast::domain {
namespace {

using net::DnsAnswer;
using net::DnsType;

constexpr const char* kTopic = "Reverse name";
constexpr std::size_t kMostNames = 10;  // of one address that are followed

struct Network {
  const char* address;
  int bits;
};
// Addresses that nobody sees from outside (RFC 1918, 6598, 3927, 4193, 4291).
constexpr std::array kPrivate = {Network{"0.0.0.0", 8},      Network{"10.0.0.0", 8},     Network{"100.64.0.0", 10},
                                 Network{"127.0.0.0", 8},    Network{"169.254.0.0", 16}, Network{"172.16.0.0", 12},
                                 Network{"192.168.0.0", 16}, Network{"::", 128},         Network{"fc00::", 7},
                                 Network{"fe80::", 10}};

bool IsPublic(const net::IpAddress& address) {
  return !net::IsLoopback(address) && std::none_of(kPrivate.begin(), kPrivate.end(), [&](const Network& network) {
    return InNetwork(address, *net::ParseIpAddress(network.address), network.bits);
  });
}

enum class WayBack { kPending, kNoAnswer, kElsewhere, kThere };

// Whether one of the names leads back to the address.
WayBack FollowBack(const net::IpAddress& address, const DnsAnswer& names, Answers& answers) {
  const DnsType type = address.family == net::Family::kIpv4 ? DnsType::kA : DnsType::kAaaa;
  WayBack way = WayBack::kElsewhere;
  for (std::size_t i = 0; i < std::min(names.records.size(), kMostNames); ++i) {
    const DnsAnswer* back = answers.Of(names.records[i].text, type);
    if (back == nullptr) {
      way = WayBack::kPending;
    } else if (!back->answered() && way != WayBack::kPending) {
      way = WayBack::kNoAnswer;
    } else if (std::any_of(back->records.begin(), back->records.end(),
                           [&](const net::DnsRecord& record) { return record.address == address; })) {
      return WayBack::kThere;
    }
  }
  return way;
}

// A server of somebody else's: what is wrong with it others have to mend, if it does harm at all.
bool IsProviders(const SenderQuestion& question) {
  return !net::ParseIpAddress(question.server) &&
         OrganisationalDomain(question.server) != OrganisationalDomain(question.domain);
}

Finding NoName(const SenderQuestion& question, const std::string& address) {
  const Sentence what = Say("The address {} has no name.", address);
  if (!IsProviders(question)) {
    return {kTopic, "no-reverse-name", Verdict::kBad, what,
            "Ask who provides the server to give the address its name: many receivers refuse a server without."};
  }
  return {kTopic, "no-reverse-name", Verdict::kWeak, what,
          Say("If {} sends your mail to others itself, ask its provider to give the address its name: many receivers "
              "refuse a server without. If it passes your mail on, nothing is to be done.",
              question.server)};
}

Finding NameElsewhere(const SenderQuestion& question, const std::string& address, const std::string& name) {
  const Sentence what = Say("The address {} is called {}, which does not lead back to it.", address, name);
  if (!IsProviders(question)) {
    return {kTopic, "reverse-name-elsewhere", Verdict::kBad, what,
            "Give that name the address, or let who provides the server give the address its right name."};
  }
  return {kTopic, "reverse-name-elsewhere", Verdict::kWeak, what,
          Say("If {} sends your mail to others itself, ask its provider to make the two agree. If it passes your mail "
              "on, nothing is to be done.",
              question.server)};
}

bool CheckAddress(const SenderQuestion& question, const net::IpAddress& address, Answers& answers, Findings& found) {
  const std::string text = net::ToString(address);
  const DnsAnswer* names = answers.Of(net::ReverseName(address), DnsType::kPtr);
  if (names == nullptr) return false;
  if (!names->answered()) {
    found.push_back(Unanswered(kTopic, text, *names));
    return true;
  }
  if (names->records.empty()) {
    found.push_back(NoName(question, text));
    return true;
  }
  const WayBack way = FollowBack(address, *names, answers);
  if (way == WayBack::kPending) return false;
  if (way == WayBack::kNoAnswer) {
    found.push_back(
        {kTopic, "no-answer", Verdict::kUnknown,
         Say("Whether {}, the name of {}, leads back to it could not be found out.", names->records[0].text, text),
         "Try again later, or ask another name server."});
  } else if (way == WayBack::kThere) {
    found.push_back({kTopic, "reverse-name", Verdict::kGood,
                     Say("The address {} is called {}, and the name leads back to it.", text, names->records[0].text)});
  } else {
    found.push_back(NameElsewhere(question, text, names->records[0].text));
  }
  return true;
}

}  // namespace

std::optional<std::vector<net::IpAddress>> PublicAddresses(const std::string& server, Answers& answers) {
  std::vector<net::IpAddress> addresses;
  if (server.empty()) return addresses;
  if (const std::optional<net::IpAddress> literal = net::ParseIpAddress(server)) {
    if (IsPublic(*literal)) addresses.push_back(*literal);
    return addresses;
  }
  const DnsAnswer* ip4 = answers.Of(server, DnsType::kA);
  const DnsAnswer* ip6 = answers.Of(server, DnsType::kAaaa);
  if (ip4 == nullptr || ip6 == nullptr) return std::nullopt;
  for (const DnsAnswer* answer : {ip4, ip6}) {
    for (const net::DnsRecord& record : answer->records) {
      if (IsPublic(record.address) && addresses.size() < kMostNames) addresses.push_back(record.address);
    }
  }
  return addresses;
}

bool CheckReverseNames(const SenderQuestion& question, const std::vector<net::IpAddress>& addresses, Answers& answers,
                       Findings& found) {
  const std::string& server = question.server;
  if (addresses.empty() && !server.empty() && !net::ParseIpAddress(server)) {
    for (const DnsType type : {DnsType::kA, DnsType::kAaaa}) {
      const DnsAnswer* answer = answers.Of(server, type);
      if (answer == nullptr || answer->answered()) continue;
      found.push_back(Unanswered(kTopic, server, *answer));
      break;
    }
  }
  bool is_known = true;
  for (const net::IpAddress& address : addresses)
    is_known = CheckAddress(question, address, answers, found) && is_known;
  return is_known;
}

}  // namespace quillcast::domain
