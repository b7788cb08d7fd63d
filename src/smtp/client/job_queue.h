// The jobs of a run between NextJob and Finished: which goes next, over which connection each is on its way, and that
// each is told once, in the order taken.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cancel.h"
#include "smtp/client/job_source.h"
#include "smtp/client/reused_queue.h"

namespace quillcast::smtp {

// Counts what every further message would meet as well: the same refusal, or that no server can be reached, or lets any
// message begin.
class Breaker {
 public:
  // How many the same have come in a row when it is time to ask whether to go on; 0 when it is not.
  int TimeToAsk(const Outcome& outcome);

 private:
  Outcome last_;
  int times_ = 0;
};

// A lane is the place of a connection among those of the run, from 0: one after the other may be there.
class JobQueue {
 public:
  // So many jobs are taken at most ahead of the oldest without an outcome: it may be with a server that is slow.
  static constexpr std::size_t kMostAhead = 10'000;

  // A job that lost its connection is sent over another one, once. `waits_for_way`: where that is lost as well, whether
  // the way was lost, or the server does it, is found out before the job fails (IsInDoubt).
  explicit JobQueue(const platform::CancelToken& cancel, std::size_t lanes = 1, bool waits_for_way = false)
      : cancel_(cancel), lanes_(lanes), waits_for_way_(waits_for_way) {}
  void Begin(JobSource& source);

  // The job to be sent now: the first of those that lost their connection that its source lets go, before a new one;
  // nullptr when there is none. It stays the next one until Submitted or Fail is called.
  Job* Next();
  // After Next had none: when there may be one, nothing where there is none any more, or the person cancelled.
  const std::optional<platform::Instant>& due() const { return due_; }
  // Whether Next gave one that is neither; and its number, in the order taken.
  bool has_next() const { return TheNext() != waiting_.end(); }
  std::uint64_t next_number() const { return *TheNext(); }
  // Whether all that were taken are told.
  bool empty() const { return entries_.empty(); }

  void Submitted(std::size_t lane = 0);
  // It has had one connection already.
  void Move();
  // It has this outcome without having been submitted, unless the person stops: then it is left.
  void Fail(const Outcome& outcome);
  // Whether there are jobs that lost their connection by themselves, or by the loss of the way: who tries to open
  // another one can tell.
  bool IsInDoubt() const { return !in_doubt_.empty(); }
  // It was the way: they wait for it, and no loss of a connection counts. All that wait may wait long now: whether they
  // may go is asked anew.
  void WayLost();
  // Who knows: they go once more, and no further.
  void GoOnceMore();
  // It was not: they have their outcome.
  void WayFound();
  // It is there again, or is for a moment: they have their outcome once a message that went out after them has one, or
  // there is no other. Where that is lost as well it may be the way all the same.
  void HoldLost();
  // So many were lost one after the other, though each time a connection came about, none was decided in between, and
  // none is out over another connection: that is no fault of theirs.
  bool LosesAll() const { return submitted_ == 0 && lost_in_a_row_ + lost_together_ > kMostLost; }
  bool HasLostLately() const { return lost_in_a_row_ > 0; }
  // Whether a message that went out since the last of them was lost is decided: over another connection.
  bool GoesOnWell() const { return goes_on_well_; }
  // Why the first of those in doubt was lost.
  const Outcome& WhyInDoubt() const { return entries_[PlaceOf(in_doubt_.front())].outcome; }
  // The run is over for all that are not out: those that wait are left, as are those whose connection ends.
  void Leave();
  // Those that wait have this outcome, as not tried, and no further one is taken.
  void GiveUp(Outcome why);

  // The outcome of the first of those that were submitted over that lane, by whose whereabouts it goes on: where it may
  // go again, to another connection once, or any number of times where there was no room for it, or when it is known
  // whether the way was lost. Where the person stops it is left.
  void Settle(std::size_t lane, const Outcome& outcome);

  // Takes a line of the lane's connection: of the job that has `place` others before it there, or of none. The lines of
  // the oldest job of all are told at once, those of the others before their outcome, so that each job's stand
  // together. Lines of none are told at once where no other connection is at work, else together between two jobs.
  void TellLine(std::size_t lane, std::size_t place, std::string_view line);
  // What the lane's connection said so far apart from its jobs stands together: it is ready for them, or over.
  void EndLines(std::size_t lane);
  // Whether the oldest job of all is on its way there.
  bool HasOldest(std::size_t lane) const;

  // Asks JobSource::CaughtUp where something was told since the last time.
  bool CatchUp();

 private:
  struct Entry {
    enum class Stage { kWaiting, kSubmitted, kInDoubt, kSettled };
    Job* job = nullptr;
    Stage stage = Stage::kWaiting;
    bool moved = false;
    bool may_go = true;  // by its source
    std::size_t losses_before = 0;
    Outcome outcome;
    std::string log;  // lines, each with "\n", that wait for the jobs before
  };
  // Jobs go by their number, in the order taken.
  using Waiting = std::vector<std::uint64_t>;
  struct Lane {
    ReusedQueue<std::uint64_t> submitted;
    std::string lines;  // of none of them
  };

  static constexpr std::size_t kMostLost = 2;

  bool IsStopped() const { return is_over_ || cancel_.Requested() != platform::Stop::kNone; }
  std::size_t PlaceOf(std::uint64_t number) const { return static_cast<std::size_t>(number - first_); }
  Entry& EntryOf(std::uint64_t number) { return entries_[PlaceOf(number)]; }
  // Few are before it: those that its source holds.
  Waiting::const_iterator TheNext() const {
    return std::find_if(waiting_.begin(), waiting_.end(),
                        [this](auto number) { return entries_[PlaceOf(number)].may_go; });
  }
  Passage PassageOf(Entry& entry);
  Job* TakeNew();
  void ComesBack(Entry& entry, const Outcome& why);
  void WaitAll();
  void TellHeld();
  void FailAll(const Outcome& outcome);
  void Wait(std::uint64_t number);
  std::uint64_t TakeWaiting(Waiting::const_iterator which);
  void Tell(Entry& entry, const Outcome& outcome);
  void TellLines(std::string& lines);

  const platform::CancelToken& cancel_;
  JobSource* source_ = nullptr;
  ReusedQueue<Entry> entries_;
  std::uint64_t first_ = 0;  // the number of the first of them
  Waiting waiting_;          // the oldest in front
  std::vector<Lane> lanes_;
  std::vector<std::uint64_t> in_doubt_;
  std::vector<std::uint64_t> held_;  // by HoldLost
  std::size_t lost_in_a_row_ = 0;    // held, or told, as lost since one was decided
  std::size_t lost_together_ = 0;    // in doubt since then
  std::size_t losses_ = 0;           // that put one in doubt, in all
  bool goes_on_well_ = false;
  const bool waits_for_way_;
  std::size_t submitted_ = 0;  // over all of them
  std::string between_;        // lines that stand before those of the next job
  Breaker breaker_;
  std::optional<platform::Instant> due_;
  bool exhausted_ = false;  // there were no more, and no outcome was told since
  bool given_up_ = false;   // nobody wanted to go on after a refusal, or there is no way to a server
  bool is_over_ = false;    // Leave was called
  bool told_ = false;       // something since CaughtUp
};

}  // namespace quillcast::smtp
