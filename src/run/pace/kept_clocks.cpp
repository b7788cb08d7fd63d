#include "run/pace/kept_clocks.h"

#include <algorithm>

namespace quillcast::run {

void KeptClocks::Learn(std::int64_t place, const Departure& departure) {
  if (departure.state != DepartureState::kClock) return;
  kept_.push_back({place, static_cast<std::uint32_t>(departure.domain), departure.when});
}

void KeptClocks::Forget(std::int64_t first) {
  std::erase_if(kept_, [first](const Kept& each) { return each.place >= first; });
}

// Some computers begin in 1970, before which the file knows nothing.
Moment KeptClocks::Booted() const { return std::max(Moment(), clock_.Now() - clock_.SinceBoot().time_since_epoch()); }

const KeptClocks::Kept* KeptClocks::Before(std::int64_t place) const {
  const auto last = std::find_if(kept_.rbegin(), kept_.rend(), [&](const Kept& each) { return each.place < place; });
  return last == kept_.rend() ? nullptr : &*last;
}

const KeptClocks::Kept* KeptClocks::LastOf(std::uint32_t boot) const {
  const auto last = std::find_if(kept_.rbegin(), kept_.rend(), [&](const Kept& each) { return each.boot == boot; });
  return last == kept_.rend() ? nullptr : &*last;
}

// The two clocks are not read at the same moment.
std::optional<Departure> KeptClocks::Missing() const {
  constexpr std::chrono::milliseconds kBetweenReadings(100);
  const std::uint32_t boot = clock_.Boot();
  if (boot == 0) return {};
  const Moment booted = Booted();
  if (!kept_.empty() && kept_.back().boot == boot &&
      std::chrono::abs(kept_.back().booted - booted) < kBetweenReadings) {
    return {};
  }
  return Departure{DepartureState::kClock, booted, Domain(boot)};
}

Moment KeptClocks::TimeOf(std::int64_t place, Uptime when) const {
  const Kept* by = Before(place);
  return (by != nullptr ? by->booted : Booted()) + when.time_since_epoch();
}

Uptime KeptClocks::WhenOf(std::int64_t place, Moment when) const {
  const std::uint32_t boot = clock_.Boot();
  const Kept* by = Before(place);
  if (by != nullptr && by->boot == boot) return std::min(Uptime(when - by->booted), clock_.SinceBoot());
  const Kept* now = LastOf(boot);
  const Uptime by_time_of_day(when - (now != nullptr ? now->booted : Booted()));
  if (by == nullptr) return std::min(by_time_of_day, clock_.SinceBoot());
  // Before this start, wherever the clock stood then and stands now.
  const Uptime latest = boot == 0 ? clock_.SinceBoot() : Uptime();
  return std::min(by_time_of_day + (LastOf(by->boot)->booted - by->booted), latest);
}

}  // namespace quillcast::run
