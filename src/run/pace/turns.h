// Whose turn it is to go out: a pace over all that has gone out, this run's own and the others'.
//
// A trouble with the file that they share is told, and stops no run: from then on the pace goes by this run alone.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/clock.h"
#include "platform/result.h"
#include "run/pace/departures.h"
#include "run/pace/pace.h"

namespace quillcast::run {

// Of one message: whose it is, and where it stands in the file while it is on its way.
struct Turn {
  Domain domain{};
  std::optional<std::int64_t> place = {};
  bool taken = false;
  std::optional<Uptime> out_since = {};
};

class Turns {
 public:
  using Tell = std::function<void(const Error&)>;
  Turns(const PaceRules& rules, const std::filesystem::path& file, const platform::Clock& clock, Tell tell);

  // Without a pace nothing is asked, and what goes out is kept for those who have one.
  bool HasPace() const { return !rules_.empty(); }
  const PaceRules& rules() const { return rules_; }
  // The instant of the other clock.
  platform::Instant InstantOf(Moment moment) const { return clock_.Monotonic() + (moment - clock_.Now()); }

  // When a message may go out for a domain that has not reached its limit, by what is known.
  Wait Due() { return pace_.Due(); }
  Wait Due(Domain domain) { return pace_.Due(domain); }
  // Takes the turn where it is due, and then has nothing to wait for; else the turn stays as it was.
  Wait Take(Turn& turn);
  // It does not go out after all. Nothing for one that was not taken, or is out.
  void GiveBack(Turn& turn);

  // From the next Record on the message may be out. Again where it goes out again.
  void GoesOut(Turn& turn);
  // After that and Record: it is not out. The other programs count it on, for they have read of it.
  void ComesBack(Turn& turn);
  // Right before the first octet of those told goes out.
  void Record();

 private:
  Result<void> TryTake(Turn& turn, Wait& wait);
  Result<void> TryGiveBack(std::int64_t place, Domain domain);
  Result<void> TryRecord();
  Result<void> ReadOthers();
  void Keep(const Result<void>& done);

  const PaceRules rules_;
  const platform::Clock& clock_;
  Tell tell_;
  Pace pace_;
  std::unique_ptr<Departures> departures_;  // none after a trouble
  std::vector<Turn> going_out_;
};

}  // namespace quillcast::run
