// By which clock it was kept when messages went out.
//
// The time of day may be set, back and forward, while programs run and between them. So the file tells, before the
// entries that are kept by it, what time of day it was when the computer was started: then an entry of this start tells
// the time since the start, which nobody sets; and one of an earlier start the time of day by the last that was known.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/clock.h"
#include "run/pace/departure_record.h"

namespace quillcast::run {

class KeptClocks {
 public:
  explicit KeptClocks(const platform::Clock& clock) : clock_(clock) {}

  // In the order of their places; the other entries are nothing to it.
  void Learn(std::int64_t place, const Departure& departure);
  // Those from there on stand no more.
  void Forget(std::int64_t first);
  // Not where an earlier version kept it, which told of no clock.
  bool IsTold(std::int64_t place) const { return Before(place) != nullptr; }
  // What is to be told in the file before the next entry.
  std::optional<Departure> Missing() const;

  // What the file tells at that place of what went out then; and when that was: never later than now.
  Moment TimeOf(std::int64_t place, Uptime when) const;
  Uptime WhenOf(std::int64_t place, Moment when) const;

 private:
  struct Kept {
    std::int64_t place = 0;
    std::uint32_t boot = 0;
    Moment booted;
  };

  Moment Booted() const;
  const Kept* Before(std::int64_t place) const;
  const Kept* LastOf(std::uint32_t boot) const;

  const platform::Clock& clock_;
  std::vector<Kept> kept_;
};

}  // namespace quillcast::run
