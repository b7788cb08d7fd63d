// When the next message may go out, by what has gone out and the rules of a person.
//
// A message is taken when it is about to be sent, and went out at the moment right before its first octet is; between
// the two a connection may have to be made. Whoever is taken counts as going out at any moment, so that each rule holds
// for the moments at which messages went out, not for those at which they were asked about.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/clock.h"
#include "run/pace/pace_rules.h"
#include "run/pace/sliding_limit.h"

namespace quillcast::run {

// What stands for a recipient's domain wherever it is counted and kept, whatever its letters' case. Two may share one,
// by a chance of one in four milliards, and then share a limit.
enum class Domain : std::uint32_t {};
Domain DomainOf(std::string_view name);

enum class PaceRule { kBegin, kRate, kHour, kDay, kDomain, kPause, kHours };

struct Wait {
  Moment until;                 // that of the question, where there is nothing to wait for
  std::optional<PaceRule> why;  // the rule that holds longest
};

class Pace {
 public:
  Pace(const PaceRules& rules, const platform::Clock& clock);

  void Taken(Domain domain);
  // It does not go out after all.
  void GivenBack(Domain domain);
  // Whether it was taken before or not; one that was is to be given back beside.
  void WentOut(Domain domain, Uptime when);
  // One that was told as out then or later, the first, is not after all. For a pause it counts on.
  void ComesBack(Domain domain, Uptime since);

  // When a message may go out that is for none of the domains that have reached their limit, and one for this domain.
  Wait Due() const { return WithinHours(DueAtAnyHour(Now())); }
  Wait Due(Domain domain);

 private:
  struct Limit {
    PaceRule rule;
    SlidingLimit limit;
  };
  // Those messages that followed each other without the pause.
  struct Row {
    std::int64_t messages = 0;
    Uptime last;
  };
  struct OfDomain {
    SlidingLimit limit;
    std::int64_t on_their_way = 0;
  };

  // One moment by both clocks.
  struct Both {
    Moment time_of_day;
    Uptime up;
  };

  Both Now() const { return {clock_.Now(), clock_.SinceBoot()}; }
  OfDomain& Of(Domain domain);
  void ForgetDomains(Uptime now);
  Wait DueAtAnyHour(const Both& now) const;
  Wait WithinHours(Wait wait) const;
  Uptime AfterPause(Uptime now) const;

  PaceRules rules_;
  const platform::Clock& clock_;
  std::vector<Limit> limits_;
  std::unordered_map<Domain, OfDomain> domains_;
  std::size_t domains_looked_over_ = 0;
  Row row_;
  std::int64_t on_their_way_ = 0;
  Uptime latest_ = Uptime::min();                           // of what went out
  mutable std::optional<std::pair<Moment, Moment>> hours_;  // asked from, and found
};

}  // namespace quillcast::run
