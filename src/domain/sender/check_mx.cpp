#include <algorithm>
#include <utility>

#include "domain/mx_hosts.h"
#include "domain/sender/sender_topics.h"

namespace quillcast::domain {
namespace {

using enum FindingKind;

constexpr const char* kNobodyAnswers =
    "Publish an MX record for the server that takes replies, or send from another domain: most receivers refuse a "
    "sender that nobody can answer.";
constexpr std::size_t kMostServers = 20;  // whose addresses are asked for

// Without an MX record the name's own address takes its mail (RFC 5321 5.1).
Known CheckFallback(const std::string& domain, Answers& answers, Findings& found) {
  const NameAddresses own = answers.AddressesOf(domain);
  if (own.known == Known::kNotYet) return own.known;
  if (!own.addresses.empty()) {
    found.push_back(
        Found(kNoMx, Say("{} has no MX record; mail to it goes to its own address.", domain),
              "Publish an MX record for the server that takes replies: some receivers doubt a sender without."));
  } else if (own.unanswered != nullptr) {
    found.push_back(Unanswered(kMxNoAnswer, domain, *own.unanswered));
  } else {
    found.push_back(Found(kNoMailServer, Say("No server takes mail for {}.", domain), kNobodyAnswers));
  }
  return Known::kYes;
}

Known CheckAddresses(const std::vector<std::string>& servers, Answers& answers, Findings& found) {
  Known known = Known::kYes;
  for (std::size_t i = 0; i < std::min(servers.size(), kMostServers); ++i) {
    if (net::ParseIpAddress(servers[i])) {
      found.push_back(
          Found(kMxIsAddress, Say("The MX record has {} where the name of a server belongs.", servers[i]),
                "Put a name into the record that has this address; few others send anything to an address."));
      continue;
    }
    const NameAddresses its = answers.AddressesOf(servers[i]);
    known = Both(known, its.known);
    if (its.known == Known::kNotYet || !its.addresses.empty()) continue;
    if (its.unanswered == nullptr) {
      found.push_back(Found(kMxWithoutAddress, Say("{}, which takes mail for the domain, has no address.", servers[i]),
                            "Remove the MX record, or give the server's name an address."));
    } else if (found.back().kind != kMxNoAnswer) {  // once, however many there are
      found.push_back(Unanswered(kMxNoAnswer, servers[i], *its.unanswered));
    }
  }
  return known;
}

}  // namespace

MailHosts CheckMx(const std::string& domain, Answers& answers, Findings& found) {
  const DnsAnswer* mx = answers.Of(domain, DnsType::kMx);
  if (mx == nullptr) return {};
  if (mx->outcome == DnsOutcome::kNoData) return {CheckFallback(domain, answers, found)};
  if (mx->outcome == DnsOutcome::kNoSuchName) {
    found.push_back(Found(kNoSuchDomain, Say("There is no domain {}.", domain),
                          "Check how it is written, and that it is still registered."));
    return {Known::kYes};
  }
  if (mx->outcome != DnsOutcome::kFound) {
    found.push_back(Unanswered(kMxNoAnswer, domain, *mx));
    return {Known::kYes};
  }
  const MxHosts named = MxHostsOf(*mx);
  std::vector<std::string> hosts;
  for (const MxHost& one : named.hosts) hosts.push_back(one.host);
  if (hosts.empty()) {
    found.push_back(Found(kNullMx, Say("{} says that it takes no mail at all (a null MX).", domain), kNobodyAnswers));
    return {Known::kYes};
  }
  if (named.has_null) {
    found.push_back(Found(kNullMxBeside,
                          Say("{} says that it takes no mail at all (a null MX), and names servers that do.", domain),
                          "Remove the null MX (\"0 .\"): receivers may take either for the truth."));
  }
  found.push_back(Found(kMx, hosts.size() == 1
                                 ? Say("Mail to {} goes to {}.", domain, hosts[0])
                                 : Say("Mail to {} goes to {}, and to {} more.", domain, hosts[0], hosts.size() - 1)));
  const Known known = CheckAddresses(hosts, answers, found);
  return {known, std::move(hosts)};
}

}  // namespace quillcast::domain
