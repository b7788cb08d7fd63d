// A run that goes slower where the server says that it is too fast, and faster again once it says so no more: half as
// fast at once, and then a tenth faster each minute without a complaint.
#pragma once

#include <deque>
#include <optional>

#include "platform/clock.h"
#include "platform/sentence.h"
#include "smtp/outcome.h"

namespace quillcast::run {

class SlowDown {
 public:
  explicit SlowDown(const platform::Clock& clock) : clock_(clock) {}

  // Whether the server asks for fewer messages, and not only for another time.
  static bool IsAskedBy(const smtp::Outcome& outcome);

  // One goes out.
  void WentOut();
  // What became of one: a sentence where the run goes slower for it. Not more than once in ten seconds, for what was on
  // its way then has the same answer; and never slower than a message a minute.
  std::optional<Sentence> Decided(const smtp::Outcome& outcome);
  // One goes over another connection: as a verdict, unless it was that one connection which the server has enough of.
  std::optional<Sentence> CameBack(const smtp::Outcome& why);

  // To be asked before a message is taken: a sentence where the run goes faster since the last time.
  std::optional<Sentence> GoFaster();
  // When the next one may be taken; it may be over. Nothing while there is no limit.
  std::optional<platform::Instant> Due() const;
  void Taken();
  // Why one waits that is not due.
  Sentence Why() const;

 private:
  struct Second {
    platform::Instant begin;
    int messages = 0;
  };
  double RateOfLate();

  const platform::Clock& clock_;
  std::deque<Second> lately_;    // the last minute
  std::optional<double> limit_;  // messages a minute
  double unlimited_ = 0;         // the rate at which the first complaint came
  platform::Instant slowed_;
  platform::Instant quiet_since_;  // or the last step up
  platform::Instant next_;
};

}  // namespace quillcast::run
