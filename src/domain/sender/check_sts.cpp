#include <algorithm>

#include "domain/sender/mta_sts.h"
#include "domain/sender/sender_topics.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using net::DnsAnswer;

using enum FindingKind;

void TellPolicy(const std::string& domain, const StsPolicy& policy, const std::vector<std::string>& servers,
                Findings& found) {
  const auto is_named = [&](const std::string& server) {
    return std::any_of(policy.servers.begin(), policy.servers.end(),
                       [&](const std::string& pattern) { return StsNames(pattern, server); });
  };
  const auto unnamed = std::find_if_not(servers.begin(), servers.end(), is_named);
  if (policy.mode == StsPolicy::Mode::kNone) {
    found.push_back(Found(kMtaStsOff, Say("The policy of {} is switched off.", domain)));
  } else if (unnamed != servers.end()) {
    found.push_back(Found(policy.mode == StsPolicy::Mode::kEnforce ? kMtaStsOtherServer : kMtaStsOtherServerOnTrial,
                          Say("The policy does not name {}, which takes mail for {}.", *unnamed, domain),
                          "Add it to the policy, or replies that would go there are not delivered."));
  } else {
    found.push_back(Found(kMtaSts, policy.mode == StsPolicy::Mode::kEnforce
                                       ? Say("Mail to {} travels under TLS alone.", domain)
                                       : Say("TLS for mail to {} is on trial.", domain)));
  }
}

bool CheckPolicy(const std::string& domain, const std::vector<std::string>& servers, Answers& answers, StsFile& file,
                 Findings& found) {
  const std::string host = "mta-sts." + domain;
  const net::DnsAnswer* ip4 = answers.Of(host, net::DnsType::kA);
  const net::DnsAnswer* ip6 = answers.Of(host, net::DnsType::kAaaa);
  if (ip4 == nullptr || ip6 == nullptr) return false;
  const DnsAnswer* silent = !ip4->answered() ? ip4 : !ip6->answered() ? ip6 : nullptr;
  if (silent != nullptr && ip4->records.empty() && ip6->records.empty()) {
    found.push_back(Unanswered(kMtaStsNoAnswer, host, *silent));
    return true;
  }
  if (!file.is_wanted) {
    for (const net::DnsAnswer* answer : {ip4, ip6}) {
      for (const net::DnsRecord& record : answer->records) file.addresses.push_back(record.address);
    }
  }
  file.is_wanted = true;
  if (!file.content) return false;
  const Result<StsPolicy> policy =
      *file.content ? ParseStsPolicy(**file.content) : Result<StsPolicy>(file.content->error());
  if (policy) {
    TellPolicy(domain, *policy, servers, found);
  } else if (policy.error().failure == Failure::kUnavailable) {
    found.push_back(Found(kMtaStsNotFetched, policy.error().what, policy.error().remedy));
  } else {
    found.push_back(Found(kMtaStsNoPolicy, Say("The record of {} leads to no policy: {}", domain, policy.error().what),
                          policy.error().remedy));
  }
  return true;
}

}  // namespace

bool CheckSts(const std::string& domain, const std::vector<std::string>& servers, Answers& answers, StsFile& file,
              Findings& found) {
  const net::DnsAnswer* texts = answers.Of("_mta-sts." + domain, net::DnsType::kTxt);
  if (texts == nullptr) return false;
  if (!texts->answered()) {
    found.push_back(Unanswered(kMtaStsNoAnswer, "_mta-sts." + domain, *texts));
    return true;
  }
  std::vector<std::string> records;
  for (const net::DnsRecord& text : texts->records) {
    if (IsStsRecord(text.text)) records.push_back(text.text);
  }
  if (records.empty()) {
    found.push_back(Found(kNoMtaSts, Say("{} does not ask that mail to it travels under TLS.", domain)));
    return true;
  }
  const Result<std::string> id = ParseStsRecord(records[0]);
  if (records.size() > 1 || !id) {
    found.push_back(Found(kMtaStsMistake,
                          id ? Say("There are {} records at _mta-sts.{}.", records.size(), domain) : id.error().what,
                          id ? Sentence("Leave one of them.") : id.error().remedy));
    return true;
  }
  return CheckPolicy(domain, servers, answers, file, found);
}

}  // namespace quillcast::domain
