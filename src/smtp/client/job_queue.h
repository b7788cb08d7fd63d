// The jobs of a run between NextJob and Finished: which goes next, which goes over a second connection, and that each
// is told once, in the order taken.
#pragma once

#include "platform/cancel.h"
#include "smtp/client/job_source.h"
#include "smtp/client/reused_queue.h"

namespace quillcast::smtp {

// Counts refusals that every further message would meet as well.
class Breaker {
 public:
  // How many the same have come in a row when it is time to ask whether to go on; 0 when it is not.
  int TimeToAsk(const Outcome& outcome);

 private:
  Outcome last_;
  int times_ = 0;
};

class JobQueue {
 public:
  explicit JobQueue(const platform::CancelToken& cancel) : cancel_(cancel) {}
  void Begin(JobSource& source);

  // The job to be sent now: one that lost its connection before a new one; nullptr when there is none. It stays the
  // next one until Submitted or Fail is called.
  Job* Next();
  // After Next had none: when there may be one, nothing where there is none any more, or the person cancelled.
  const std::optional<platform::Instant>& due() const { return due_; }
  void Submitted();
  // It has had one connection already: there is no third.
  void Move();
  // It has this outcome without having been submitted.
  void Fail(const Outcome& outcome);

  // The outcome of the first of those that were submitted. `again`: the server has not taken it for certain, and
  // another connection may serve it.
  void Settle(const Outcome& outcome, bool again);

  // Takes a line of the connection, of the submitted job that has `place` submitted ones before it, and tells it before
  // that job's outcome, so that the lines of each job stand together. False where nothing has to be waited for, because
  // it is of the first job of all or of none: the line is to be told now.
  bool KeepLine(std::size_t place, std::string_view line);

  // Asks JobSource::CaughtUp where something was told since the last time.
  bool CatchUp();

 private:
  // In the order taken. Those submitted have the order in which they were submitted: while any is, those that wait
  // stand behind it, for they lost their connection together.
  struct Entry {
    enum class Stage { kWaiting, kSubmitted, kSettled };
    Job* job = nullptr;
    Stage stage = Stage::kWaiting;
    bool moved = false;
    Outcome outcome;
    std::string log;  // lines, each with "\n", that wait for the jobs before
  };

  Entry* FirstAt(Entry::Stage stage);
  void Tell(Entry& entry, const Outcome& outcome);
  void TellLog(Entry& entry);

  const platform::CancelToken& cancel_;
  JobSource* source_ = nullptr;
  ReusedQueue<Entry> entries_;
  std::size_t waiting_ = 0;  // entries at that stage
  Breaker breaker_;
  std::optional<platform::Instant> due_;
  bool exhausted_ = false;  // there were no more, and no outcome was told since
  bool given_up_ = false;   // nobody wanted to go on after a refusal
  bool told_ = false;       // something since CaughtUp
};

}  // namespace quillcast::smtp
