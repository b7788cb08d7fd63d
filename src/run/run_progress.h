// How far a run is and how fast it goes, by what its listener is told: what a window shows of it.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "platform/clock.h"
#include "platform/sentence.h"
#include "run/pace/pace_rules.h"
#include "run/run_rate.h"
#include "run/sending_run.h"

namespace quillcast::run {

struct ProgressLook {
  std::int64_t done = 0;   // of the recipients: those of whom nothing more is to come
  std::int64_t again = 0;  // who had a try and are to have another; none once the run has ended
  std::int64_t total = 0;
  Sentence line;  // how fast and how long, or what it waits for; empty before anything can be said
};

// It belongs to one thread at a time. The time that a person was asked, or held the run, counts for no rate, nor does
// that between the end of the list and another try, nor that without a way to the server: a wait for the pace does, for
// that is how fast the run goes.
class RunProgress {
 public:
  explicit RunProgress(const platform::Clock& clock) : clock_(clock) {}

  void Begins(std::int64_t total);
  // More than that goes out only for a moment: the burst with which a limit begins is told as no rate.
  void KeepsTo(const MessageLimit& limit) { limit_ = limit; }
  // As it turned out.
  void TotalIs(std::int64_t total) { total_ = total; }
  void Finished(const RecipientResult& result);
  // Octets of a message go out: nothing is waited for.
  void GoesOut();
  // A wait that is over in a moment is none.
  void Waits(const Sentence& why, Moment until);
  // There is no way to the server, and it is tried again then. So it stands until something goes out, or something else
  // is waited for.
  void WayLost(const Sentence& why, Moment until);
  // A person is asked whether it goes on, and has answered.
  void Asks();
  void Answered();
  // A person holds it: nothing new begins, though some may be under way; and lets it go on.
  enum class UnderWay { kNothing, kSomething };
  void IsHeld(UnderWay what);
  void IsLetGo();
  void Ends();

  ProgressLook Now();

 private:
  struct Pause {
    Sentence why;
    Moment until;
  };
  struct Sample {
    platform::Duration worked;
    std::int64_t tries;
  };
  enum class Stage { kBefore, kGoes, kAsks, kEnded };

  void CountTime();
  Sentence Line();
  Sentence HeldLine() const;
  Sentence Rate();
  RunRate RateOf(std::int64_t tries, platform::Duration worked) const;

  const platform::Clock& clock_;
  Stage stage_ = Stage::kBefore;
  std::optional<MessageLimit> limit_;
  std::int64_t total_ = 0;
  std::int64_t tried_ = 0;  // recipients
  std::int64_t done_ = 0;
  std::int64_t again_ = 0;
  std::int64_t tries_ = 0;
  std::optional<UnderWay> held_;
  std::optional<Pause> wait_;
  std::optional<Pause> lost_;  // the way
  platform::Instant counted_to_;
  platform::Instant idle_until_;  // for who is tried again
  platform::Duration worked_{0};
  std::deque<Sample> samples_;  // of late, at each look
};

}  // namespace quillcast::run
