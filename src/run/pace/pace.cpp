#include "run/pace/pace.h"

#include <algorithm>

#include "platform/text.h"
#include "run/pace/local_time.h"
#include "run/pace/short_hash.h"

namespace quillcast::run {
namespace {

constexpr std::size_t kFewDomains = 1024;

}  // namespace

Domain DomainOf(std::string_view name) { return Domain(ShortHash(platform::AsciiLower(name))); }

Pace::Pace(const PaceRules& rules, const platform::Clock& clock) : rules_(rules), clock_(clock) {
  const auto add = [this](PaceRule rule, const std::optional<MessageLimit>& limit) {
    if (limit) limits_.push_back({rule, SlidingLimit(*limit)});
  };
  add(PaceRule::kRate, rules.rate);
  add(PaceRule::kHour, rules.per_hour);
  add(PaceRule::kDay, rules.per_day);
}

Pace::OfDomain& Pace::Of(Domain domain) {
  return domains_.try_emplace(domain, OfDomain{SlidingLimit(*rules_.per_domain)}).first->second;
}

void Pace::Taken(Domain domain) {
  ++on_their_way_;
  if (rules_.per_domain) ++Of(domain).on_their_way;
}

void Pace::GivenBack(Domain domain) {
  --on_their_way_;
  if (rules_.per_domain) --Of(domain).on_their_way;
}

void Pace::WentOut(Domain domain, Uptime when) {
  const Uptime before = latest_;
  latest_ = std::max(latest_, when);  // what another program tells may be a little older than what was told before
  for (Limit& limit : limits_) limit.limit.WentOut(latest_);
  if (rules_.per_domain) Of(domain).limit.WentOut(latest_);
  if (!rules_.pause) return;
  const bool after_pause = row_.messages == 0 || latest_ - before >= rules_.pause->pause;
  row_ = {after_pause ? 1 : row_.messages + 1, latest_};
}

void Pace::ComesBack(Domain domain, Uptime since) {
  for (Limit& limit : limits_) limit.limit.ComesBack(since);
  if (rules_.per_domain) Of(domain).limit.ComesBack(since);
}

// Those whose limit counts nobody, once there are twice as many as were left the last time.
void Pace::ForgetDomains(Uptime now) {
  if (domains_.size() < std::max(kFewDomains, 2 * domains_looked_over_)) return;
  std::erase_if(domains_,
                [now](const auto& each) { return each.second.on_their_way == 0 && each.second.limit.IsEmptyAt(now); });
  domains_looked_over_ = domains_.size();
}

// Those on their way make the row longer, whenever they go out.
Uptime Pace::AfterPause(Uptime now) const {
  const bool over = row_.messages == 0 || now - row_.last >= rules_.pause->pause;
  if ((over ? 0 : row_.messages) + on_their_way_ < rules_.pause->messages) return now;
  return on_their_way_ > 0 ? now + rules_.pause->pause : row_.last + rules_.pause->pause;
}

Wait Pace::DueAtAnyHour(const Both& now) const {
  Wait wait{now.time_of_day, {}};
  const auto take = [&wait](Moment until, PaceRule why) {
    if (until > wait.until) wait = {until, why};
  };
  const auto of_day = [&now](Uptime until) { return now.time_of_day + (until - now.up); };
  if (rules_.begin) take(*rules_.begin, PaceRule::kBegin);
  for (const Limit& limit : limits_) take(of_day(limit.limit.Due(now.up, on_their_way_)), limit.rule);
  if (rules_.pause) take(of_day(AfterPause(now.up)), PaceRule::kPause);
  return wait;
}

Wait Pace::WithinHours(Wait wait) const {
  if (!rules_.hours) return wait;
  const bool known = hours_ && hours_->first <= wait.until && wait.until <= hours_->second;
  if (!known) hours_ = {wait.until, NextWithin(*rules_.hours, wait.until, clock_)};
  return hours_->second > wait.until ? Wait{hours_->second, PaceRule::kHours} : wait;
}

Wait Pace::Due(Domain domain) {
  const Both now = Now();
  Wait wait = DueAtAnyHour(now);
  if (rules_.per_domain) {
    ForgetDomains(now.up);
    if (const auto of = domains_.find(domain); of != domains_.end()) {
      const Moment until = now.time_of_day + (of->second.limit.Due(now.up, of->second.on_their_way) - now.up);
      if (until > wait.until) wait = {until, PaceRule::kDomain};
    }
  }
  return WithinHours(wait);
}

}  // namespace quillcast::run
