#include "domain/sender/spf_check.h"

#include <algorithm>

#include "domain/sender/reverse_names.h"

namespace quillcast::domain {
namespace {

using State = SpfPublished::State;

// One sender against one record after the other.
class Evaluation {
 public:
  Evaluation(Answers& answers, const SpfSender& sender, bool may_have_name)
      : answers_(answers), sender_(sender), may_have_name_(may_have_name) {}

  SpfResult Check(const std::string& domain) {
    const SpfPublished found = FindSpf(answers_, domain);
    if (found.state != State::kRead) return ResultWithout(found.state);
    for (const SpfTerm& term : found.record.terms) {
      if (term.NeedsLookup() && ++lookups_ > kMostSpfLookups) return SpfResult::kPermanentError;
      const Match match = Matches(term, domain);
      if (match == Match::kYes) return ResultOf(term.verdict);
      if (match != Match::kNo) return ResultOf(match);
    }
    if (found.record.redirect.empty()) return SpfResult::kNeutral;
    if (++lookups_ > kMostSpfLookups) return SpfResult::kPermanentError;
    const SpfResult result = Check(SpfNameOf(found.record.redirect, domain, sender_));
    return result == SpfResult::kNone ? SpfResult::kPermanentError : result;
  }

 private:
  enum class Match { kYes, kNo, kPending, kTemporaryError, kPermanentError };

  static SpfResult ResultWithout(State state) {
    switch (state) {
      case State::kPending:
        return SpfResult::kPending;
      case State::kNoAnswer:
        return SpfResult::kTemporaryError;
      case State::kNone:
        return SpfResult::kNone;
      default:
        return SpfResult::kPermanentError;
    }
  }

  static SpfResult ResultOf(SpfVerdict verdict) {
    static_assert(static_cast<int>(SpfResult::kPass) == static_cast<int>(SpfVerdict::kPass) &&
                  static_cast<int>(SpfResult::kFail) == static_cast<int>(SpfVerdict::kFail) &&
                  static_cast<int>(SpfResult::kSoftFail) == static_cast<int>(SpfVerdict::kSoftFail) &&
                  static_cast<int>(SpfResult::kNeutral) == static_cast<int>(SpfVerdict::kNeutral));
    return static_cast<SpfResult>(verdict);
  }

  static SpfResult ResultOf(Match match) {
    return match == Match::kPending          ? SpfResult::kPending
           : match == Match::kTemporaryError ? SpfResult::kTemporaryError
                                             : SpfResult::kPermanentError;
  }

  Match Matches(const SpfTerm& term, const std::string& domain) {
    const std::string name = SpfNameOf(term.name, domain, sender_);
    switch (term.mechanism) {
      case SpfMechanism::kAll:
        return Match::kYes;
      case SpfMechanism::kIp4:
        return net::InNetwork(sender_.address, term.network, term.bits4) ? Match::kYes : Match::kNo;
      case SpfMechanism::kIp6:
        return net::InNetwork(sender_.address, term.network, term.bits6) ? Match::kYes : Match::kNo;
      case SpfMechanism::kInclude:
        return Included(name);
      case SpfMechanism::kA:
        return HasAddress(name, term);
      case SpfMechanism::kMx:
        return HasServer(name, term);
      case SpfMechanism::kExists:
        return Exists(name);
      case SpfMechanism::kPtr:
        return HasReverseName(name);
    }
    return Match::kNo;
  }

  // RFC 7208 5.2: only a pass of the other record is a match.
  Match Included(const std::string& domain) {
    switch (Check(domain)) {
      case SpfResult::kPass:
        return Match::kYes;
      case SpfResult::kPending:
        return Match::kPending;
      case SpfResult::kTemporaryError:
        return Match::kTemporaryError;
      case SpfResult::kNone:
      case SpfResult::kPermanentError:
        return Match::kPermanentError;
      default:
        return Match::kNo;
    }
  }

  // What a term names. kYes where records were found; then `records` has them.
  Match Find(const std::string& name, DnsType type, const std::vector<net::DnsRecord>*& records) {
    const Match found = FindBehind(name, type, records);
    return found == Match::kNo && ++voids_ > kMostVoidLookups ? Match::kPermanentError : found;
  }

  // The same of what the answer to a term leads to: the limit of void look-ups is one of terms (RFC 7208 4.6.4), so
  // that mail hosts of one family alone do no harm.
  Match FindBehind(const std::string& name, DnsType type, const std::vector<net::DnsRecord>*& records) {
    const DnsAnswer* answer = answers_.Of(name, type);
    if (answer == nullptr) return Match::kPending;
    if (IsVoidLookup(*answer) || answer->outcome == DnsOutcome::kBadName) return Match::kNo;
    if (answer->outcome != DnsOutcome::kFound) return Match::kTemporaryError;
    records = &answer->records;
    return Match::kYes;
  }

  Match HasAddress(const std::string& name, const SpfTerm& term) {
    const std::vector<net::DnsRecord>* records = nullptr;
    const Match found = Find(name, net::TypeFor(sender_.address.family), records);
    return found == Match::kYes ? IsAmong(*records, term) : found;
  }

  Match IsAmong(const std::vector<net::DnsRecord>& records, const SpfTerm& term) const {
    const int bits = sender_.address.family == net::Family::kIpv4 ? term.bits4 : term.bits6;
    const bool is_there = std::any_of(records.begin(), records.end(), [&](const net::DnsRecord& record) {
      return net::InNetwork(sender_.address, record.address, bits);
    });
    return is_there ? Match::kYes : Match::kNo;
  }

  // All are asked for at once; the first that is missing makes the whole pending.
  Match HasServer(const std::string& name, const SpfTerm& term) {
    const std::vector<net::DnsRecord>* servers = nullptr;
    const Match found = Find(name, DnsType::kMx, servers);
    if (found != Match::kYes) return found;
    if (servers->size() > kMostSpfHosts) return Match::kPermanentError;
    Match whole = Match::kNo;
    for (const net::DnsRecord& server : *servers) {
      if (server.text.empty()) continue;  // a null MX
      const std::vector<net::DnsRecord>* records = nullptr;
      Match match = FindBehind(server.text, net::TypeFor(sender_.address.family), records);
      if (match == Match::kYes) match = IsAmong(*records, term);
      if (match == Match::kYes) return match;
      if (match != Match::kNo && whole != Match::kPending) whole = match;
    }
    return whole;
  }

  Match Exists(const std::string& name) {
    const std::vector<net::DnsRecord>* records = nullptr;
    return Find(name, DnsType::kA, records);  // also for a sender with an IPv6 address (RFC 7208 5.7)
  }

  // RFC 7208 5.5: a name of the address that ends in `domain` and leads back to the address.
  Match HasReverseName(const std::string& domain) {
    const std::vector<net::DnsRecord>* names = nullptr;
    const std::string reverse = net::ReverseName(sender_.address);
    const Match found =
        may_have_name_ ? FindBehind(reverse, DnsType::kPtr, names) : Find(reverse, DnsType::kPtr, names);
    if (found == Match::kTemporaryError) return Match::kNo;
    if (found != Match::kYes) return found;
    const auto is_below = [&](const std::string& name) { return name == domain || name.ends_with("." + domain); };
    switch (FollowBack(sender_.address, *names, answers_, is_below)) {
      case WayBack::kThere:
        return Match::kYes;
      case WayBack::kPending:
        return Match::kPending;
      default:
        return Match::kNo;
    }
  }

  Answers& answers_;
  const SpfSender& sender_;
  const bool may_have_name_;
  int lookups_ = 0;
  int voids_ = 0;
};

}  // namespace

bool IsVoidLookup(const DnsAnswer& answer) {
  return answer.outcome == DnsOutcome::kNoData || answer.outcome == DnsOutcome::kNoSuchName;
}

SpfPublished FindSpf(Answers& answers, const std::string& domain) {
  const auto [answer, records] = answers.TextsAt(domain, IsSpf);
  SpfPublished found{.count = static_cast<int>(records.size())};
  if (answer == nullptr) return found;
  if (records.size() > 1) {
    found.state = State::kSeveral;
  } else if (records.empty()) {
    found.state = answer->answered() || answer->outcome == DnsOutcome::kBadName ? State::kNone : State::kNoAnswer;
  } else if (Result<SpfRecord> record = ParseSpf(records.front())) {
    found.state = State::kRead;
    found.record = *std::move(record);
  } else {
    found.state = State::kMistake;
    found.mistake = record.error();
  }
  return found;
}

SpfResult EvaluateSpf(Answers& answers, const SpfSender& sender, bool may_have_name) {
  return Evaluation(answers, sender, may_have_name).Check(sender.domain);
}

}  // namespace quillcast::domain
