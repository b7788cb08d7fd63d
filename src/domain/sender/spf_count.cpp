// What a whole record costs, and whether all that it leads to is there.
#include <algorithm>

#include "domain/sender/spf_check.h"
#include "platform/text.h"

namespace quillcast::domain {
namespace {

using State = SpfPublished::State;

// Follows every term of a record and of those that it leads to.
class Count {
 public:
  Count(Answers& answers, const SpfSender& sender) : answers_(answers), sender_(sender) {}

  SpfCost Of(const std::string& domain) {
    Follow(domain);
    return std::move(cost_);
  }

 private:
  // False once so many were counted that more would tell nothing new.
  bool Counts() { return cost_.lookups < kMostCountedLookups && ++cost_.lookups > 0; }

  void Follow(const std::string& domain) {
    const SpfPublished found = FindSpf(answers_, domain);
    if (found.state == State::kPending) {
      cost_.is_pending = true;
    } else if (found.state == State::kNoAnswer) {
      NoteUnanswered(domain, *answers_.Of(domain, DnsType::kTxt));
    } else if (found.state != State::kRead && cost_.broken.empty()) {
      cost_.broken = domain;
      cost_.broken_state = found.state;
    }
    path_.push_back(domain);
    for (const SpfTerm& term : found.record.terms) {
      if (term.mechanism == SpfMechanism::kAll) break;  // what stands behind it is passed over (RFC 7208 5.1)
      if (term.NeedsLookup() && Counts() && IsKnown(term.name)) Look(term, domain);
    }
    const std::string& redirect = found.record.redirect;
    if (!redirect.empty() && Counts() && IsKnown(redirect)) Lead(SpfNameOf(redirect, domain, sender_));
    path_.pop_back();
  }

  bool IsKnown(const std::string& name) const {
    return name.find('%') == std::string::npos || sender_.address != net::IpAddress();
  }

  void NoteUnanswered(const std::string& name, const DnsAnswer& answer) {
    if (!cost_.unanswered.empty()) return;
    cost_.unanswered = name;
    cost_.no_answer = answer;
  }

  void Lead(const std::string& domain) {
    if (std::find(path_.begin(), path_.end(), domain) == path_.end()) return Follow(domain);
    if (cost_.itself.empty()) cost_.itself = domain;
  }

  void Look(const SpfTerm& term, const std::string& domain) {
    const std::string name = SpfNameOf(term.name, domain, sender_);
    switch (term.mechanism) {
      case SpfMechanism::kInclude:
        return Lead(name);
      case SpfMechanism::kA:
        return LookForAddresses(name);
      case SpfMechanism::kMx:
        return LookForServers(name);
      default:
        return;  // what "exists" and "ptr" find is different for each sender
    }
  }

  void LookForAddresses(const std::string& name) {
    const NameAddresses its = answers_.AddressesOf(name);
    if (its.known == Known::kNotYet) {
      cost_.is_pending = true;
    } else if (its.addresses.empty() && its.unanswered == nullptr) {
      cost_.void_names.push_back(name);
    } else if (its.addresses.empty()) {
      NoteUnanswered(name, *its.unanswered);
    }
  }

  void LookForServers(const std::string& name) {
    const DnsAnswer* servers = answers_.Of(name, DnsType::kMx);
    if (servers == nullptr) {
      cost_.is_pending = true;
    } else if (IsVoidLookup(*servers)) {
      cost_.void_names.push_back(name);
    } else if (servers->outcome != DnsOutcome::kFound) {
      NoteUnanswered(name, *servers);
    } else if (servers->records.size() > kMostSpfHosts && cost_.crowded.empty()) {
      cost_.crowded = name;
    }
  }

  Answers& answers_;
  const SpfSender& sender_;
  SpfCost cost_;
  std::vector<std::string> path_;  // from the first domain to the one that is read
};

}  // namespace

SpfCost CountSpf(Answers& answers, const SpfSender& sender) {
  return Count(answers, sender).Of(platform::AsciiLower(sender.domain));
}

}  // namespace quillcast::domain
