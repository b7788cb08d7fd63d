#include <algorithm>

#include "domain/sender/sender_topics.h"

namespace quillcast::domain {
namespace {

using net::DnsAnswer;
using net::DnsOutcome;
using net::DnsType;

using enum FindingKind;

constexpr std::size_t kMostServers = 20;  // whose addresses are asked for

// Without an MX record the name's own address takes its mail (RFC 5321 5.1).
bool CheckFallback(const std::string& domain, Answers& answers, Findings& found) {
  const DnsAnswer* ip4 = answers.Of(domain, DnsType::kA);
  const DnsAnswer* ip6 = answers.Of(domain, DnsType::kAaaa);
  if (ip4 == nullptr || ip6 == nullptr) return false;
  if (ip4->outcome == DnsOutcome::kFound || ip6->outcome == DnsOutcome::kFound) {
    found.push_back(
        Found(kNoMx, Say("{} has no MX record; mail to it goes to its own address.", domain),
              "Publish an MX record for the server that takes replies: some receivers doubt a sender without."));
  } else if (!ip4->answered() || !ip6->answered()) {
    found.push_back(Unanswered(kMxNoAnswer, domain, ip4->answered() ? *ip6 : *ip4));
  } else {
    found.push_back(Found(kNoMailServer, Say("No server takes mail for {}.", domain),
                          "Publish an MX record for the server that takes replies, or send from another domain: most "
                          "receivers refuse a sender that nobody can answer."));
  }
  return true;
}

bool CheckAddresses(const std::vector<std::string>& servers, Answers& answers, Findings& found) {
  bool is_known = true;
  for (std::size_t i = 0; i < std::min(servers.size(), kMostServers); ++i) {
    if (net::ParseIpAddress(servers[i])) {
      found.push_back(
          Found(kMxIsAddress, Say("The MX record has {} where the name of a server belongs.", servers[i]),
                "Put a name into the record that has this address; few others send anything to an address."));
      continue;
    }
    const DnsAnswer* ip4 = answers.Of(servers[i], DnsType::kA);
    const DnsAnswer* ip6 = answers.Of(servers[i], DnsType::kAaaa);
    if (ip4 == nullptr || ip6 == nullptr) {
      is_known = false;
    } else if (!ip4->records.empty() || !ip6->records.empty()) {
      continue;
    } else if (!ip4->answered() || !ip6->answered()) {
      // Once, however many there are.
      if (found.back().kind != kMxNoAnswer) {
        found.push_back(Unanswered(kMxNoAnswer, servers[i], ip4->answered() ? *ip6 : *ip4));
      }
    } else {
      found.push_back(Found(kMxWithoutAddress, Say("{}, which takes mail for the domain, has no address.", servers[i]),
                            "Remove the MX record, or give the server's name an address."));
    }
  }
  return is_known;
}

}  // namespace

bool CheckMx(const std::string& domain, Answers& answers, Findings& found, std::vector<std::string>& servers) {
  const DnsAnswer* mx = answers.Of(domain, DnsType::kMx);
  if (mx == nullptr) return false;
  if (mx->outcome == DnsOutcome::kNoSuchName) {
    found.push_back(Found(kNoSuchDomain, Say("There is no domain {}.", domain),
                          "Check how it is written, and that it is still registered."));
    return true;
  }
  if (mx->outcome == DnsOutcome::kNoData) return CheckFallback(domain, answers, found);
  if (mx->outcome != DnsOutcome::kFound) {
    found.push_back(Unanswered(kMxNoAnswer, domain, *mx));
    return true;
  }
  std::vector<net::DnsRecord> records = mx->records;
  std::stable_sort(records.begin(), records.end(),
                   [](const auto& a, const auto& b) { return a.preference < b.preference; });
  for (const net::DnsRecord& record : records) {
    if (!record.text.empty()) servers.push_back(record.text);
  }
  if (servers.empty()) {
    found.push_back(Found(kNullMx, Say("{} says that it takes no mail at all (a null MX).", domain),
                          "Publish an MX record for the server that takes replies, or send from another domain: most "
                          "receivers refuse a sender that nobody can answer."));
    return true;
  }
  if (servers.size() < records.size()) {
    found.push_back(Found(kNullMxBeside,
                          Say("{} says that it takes no mail at all (a null MX), and names servers that do.", domain),
                          "Remove the null MX (\"0 .\"): receivers may take either for the truth."));
  }
  found.push_back(Found(kMx, servers.size() == 1 ? Say("Mail to {} goes to {}.", domain, servers[0])
                                                 : Say("Mail to {} goes to {}, and to {} more.", domain, servers[0],
                                                       servers.size() - 1)));
  return CheckAddresses(servers, answers, found);
}

}  // namespace quillcast::domain
