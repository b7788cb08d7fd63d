#include <algorithm>
#include <utility>

#include "domain/sender/mta_sts.h"
#include "domain/sender/sender_topics.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

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

Known CheckPolicy(const std::string& domain, const std::vector<std::string>& servers, Answers& answers, StsFile& file,
                  Findings& found) {
  const std::string host = "mta-sts." + domain;
  NameAddresses its = answers.AddressesOf(host);
  if (its.known == Known::kNotYet) return its.known;
  if (its.unanswered != nullptr && its.addresses.empty()) {
    found.push_back(Unanswered(kMtaStsNoAnswer, host, *its.unanswered));
    return Known::kYes;
  }
  if (!file.is_wanted) file.addresses = std::move(its.addresses);
  file.is_wanted = true;
  if (!file.content) return Known::kNotYet;
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
  return Known::kYes;
}

}  // namespace

Known CheckSts(const std::string& domain, const std::vector<std::string>& servers, Answers& answers, StsFile& file,
               Findings& found) {
  const auto [answer, records] = answers.TextsAt("_mta-sts." + domain, IsStsRecord);
  if (answer == nullptr) return Known::kNotYet;
  if (!answer->answered()) {
    found.push_back(Unanswered(kMtaStsNoAnswer, "_mta-sts." + domain, *answer));
    return Known::kYes;
  }
  if (records.empty()) {
    found.push_back(Found(kNoMtaSts, Say("{} does not ask that mail to it travels under TLS.", domain)));
    return Known::kYes;
  }
  const Result<std::string> id = ParseStsRecord(records[0]);
  if (records.size() > 1 || !id) {
    found.push_back(Found(kMtaStsMistake,
                          id ? Say("There are {} records at _mta-sts.{}.", records.size(), domain) : id.error().what,
                          id ? Sentence("Leave one of them.") : id.error().remedy));
    return Known::kYes;
  }
  return CheckPolicy(domain, servers, answers, file, found);
}

}  // namespace quillcast::domain
