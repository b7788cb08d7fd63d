#include <algorithm>
#include <array>

#include "domain/sender/dmarc_record.h"
#include "domain/sender/sender_topics.h"
#include "domain/sender/spf_record.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using net::DnsAnswer;
using net::DnsType;

using enum FindingKind;

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

// Where a finding belongs: the domain that is checked, and the server.
struct Place {
  const std::string& domain;
  const std::string& server;
};

// A server of somebody else's: what is wrong with it others have to mend, if it does harm at all.
bool IsProviders(const Place& place) {
  return !net::ParseIpAddress(place.server) && OrganisationalDomain(place.server) != OrganisationalDomain(place.domain);
}

Finding NoName(const Place& place, const std::string& address) {
  const Sentence what = Say("The address {} has no name.", address);
  if (!IsProviders(place)) {
    return Found(kNoReverseName, what,
                 "Ask who provides the server to give the address its name: many receivers refuse a server without.");
  }
  return Found(
      kProvidersNoReverseName, what,
      Say("If {} sends your mail to others itself, ask its provider to give the address its name: many receivers "
          "refuse a server without. If it passes your mail on, nothing is to be done.",
          place.server));
}

Finding NameElsewhere(const Place& place, const std::string& address, const std::string& name) {
  const Sentence what = Say("The address {} is called {}, which does not lead back to it.", address, name);
  if (!IsProviders(place)) {
    return Found(kReverseNameElsewhere, what,
                 "Give that name the address, or let who provides the server give the address its right name.");
  }
  return Found(
      kProvidersReverseNameElsewhere, what,
      Say("If {} sends your mail to others itself, ask its provider to make the two agree. If it passes your mail "
          "on, nothing is to be done.",
          place.server));
}

bool CheckAddress(const Place& place, const net::IpAddress& address, Answers& answers, Findings& found) {
  const std::string text = net::ToString(address);
  const DnsAnswer* names = answers.Of(net::ReverseName(address), DnsType::kPtr);
  if (names == nullptr) return false;
  if (!names->answered()) {
    found.push_back(Unanswered(kReverseNameNoAnswer, text, *names));
    return true;
  }
  if (names->records.empty()) {
    found.push_back(NoName(place, text));
    return true;
  }
  const WayBack way = FollowBack(address, *names, answers);
  if (way == WayBack::kPending) return false;
  if (way == WayBack::kNoAnswer) {
    found.push_back(
        Found(kReverseNameNoAnswer,
              Say("Whether {}, the name of {}, leads back to it could not be found out.", names->records[0].text, text),
              "Try again later, or ask another name server."));
  } else if (way == WayBack::kThere) {
    found.push_back(Found(kReverseName, Say("The address {} is called {}, and the name leads back to it.", text,
                                            names->records[0].text)));
  } else {
    found.push_back(NameElsewhere(place, text, names->records[0].text));
  }
  return true;
}

// A server of which no address is known, because nobody answered or because there is none.
void TellWithoutAddress(const std::string& server, Answers& answers, Findings& found) {
  for (const DnsType type : {DnsType::kA, DnsType::kAaaa}) {
    const DnsAnswer* answer = answers.Of(server, type);
    if (answer == nullptr || !answer->records.empty()) return;  // one in a private network
    if (!answer->answered()) return found.push_back(Unanswered(kReverseNameNoAnswer, server, *answer));
  }
  // "localhost", "mail": known to this computer or its network alone.
  if (server.find('.') == std::string::npos) return;
  found.push_back(Found(kServerWithoutAddress,
                        Say("{}, to which the mail is given, has no address.", platform::Printable(server)),
                        "Check how it is written; if it is known in your own network alone, nothing is to be done."));
}

}  // namespace

std::optional<SeenServer> LookAtServer(const std::string& name, Answers& answers) {
  SeenServer server{.name = name};
  if (const std::optional<net::IpAddress> literal = net::ParseIpAddress(name)) {
    if (IsPublic(*literal)) server.addresses.push_back(*literal);
    return server;
  }
  const DnsAnswer* ip4 = answers.Of(name, DnsType::kA);
  const DnsAnswer* ip6 = answers.Of(name, DnsType::kAaaa);
  if (ip4 == nullptr || ip6 == nullptr) return std::nullopt;
  for (const DnsAnswer* answer : {ip4, ip6}) {
    for (const net::DnsRecord& record : answer->records) {
      if (IsPublic(record.address) && server.addresses.size() < kMostNames) server.addresses.push_back(record.address);
    }
  }
  return server;
}

bool CheckReverseNames(const std::string& domain, const SeenServer& server, Answers& answers, Findings& found) {
  if (server.addresses.empty() && !net::ParseIpAddress(server.name)) TellWithoutAddress(server.name, answers, found);
  bool is_known = true;
  for (const net::IpAddress& address : server.addresses) {
    is_known = CheckAddress({.domain = domain, .server = server.name}, address, answers, found) && is_known;
  }
  return is_known;
}

}  // namespace quillcast::domain
