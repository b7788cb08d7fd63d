#include "smtp/client/job_queue.h"

#include <string_view>
#include <utility>

namespace quillcast::smtp {
namespace {

// How many of the same in a row are enough; 0 for what another message may not meet. Sign-ins are few, for servers lock
// an account that fails too often.
int LimitOf(const Outcome& outcome) {
  const bool refused = outcome.state == State::kRefused;
  switch (outcome.code) {
    case ResultCode::kAuthRefused:
    case ResultCode::kAuthNotOffered:
      return 3;
    case ResultCode::kSenderRefused:
    case ResultCode::kGreetingRefused:
      return refused ? 20 : 0;
    default:
      return 0;
  }
}

}  // namespace

int Breaker::TimeToAsk(const Outcome& outcome) {
  const int limit = LimitOf(outcome);
  if (limit == 0) {
    times_ = 0;
    return 0;
  }
  const bool same = times_ > 0 && outcome.code == last_.code && outcome.reply.code == last_.reply.code &&
                    outcome.reply.enhanced == last_.reply.enhanced;
  if (!same) last_ = outcome;
  times_ = same ? times_ + 1 : 1;
  return times_ % limit == 0 ? times_ : 0;
}

void JobQueue::Begin(JobSource& source) {
  source_ = &source;
  exhausted_ = given_up_ = false;
}

JobQueue::Entry* JobQueue::FirstAt(Entry::Stage stage) {
  for (std::size_t n = 0; n < entries_.size(); ++n) {
    if (entries_[n].stage == stage) return &entries_[n];
  }
  return nullptr;
}

Job* JobQueue::Next() {
  if (waiting_ > 0) return FirstAt(Entry::Stage::kWaiting)->job;
  due_.reset();
  if (exhausted_ || given_up_ || cancel_.Requested() != platform::Stop::kNone) return nullptr;
  Job* job = source_->NextJob();
  if (job == nullptr) {
    due_ = source_->NextDue();
    exhausted_ = !due_;
    return nullptr;
  }
  Entry& entry = entries_.Push();
  entry.job = job;
  entry.stage = Entry::Stage::kWaiting;
  entry.moved = false;
  entry.log.clear();
  ++waiting_;
  return job;
}

void JobQueue::Submitted() {
  Entry& entry = *FirstAt(Entry::Stage::kWaiting);
  entry.stage = Entry::Stage::kSubmitted;
  --waiting_;
  source_->GoesOut(*entry.job);
  told_ = true;
}

void JobQueue::Move() { FirstAt(Entry::Stage::kWaiting)->moved = true; }

void JobQueue::Fail(const Outcome& outcome) {
  --waiting_;
  Tell(*FirstAt(Entry::Stage::kWaiting), outcome);
}

void JobQueue::Settle(const Outcome& outcome, bool again) {
  Entry& entry = *FirstAt(Entry::Stage::kSubmitted);
  if (!again) return Tell(entry, outcome);
  if (!entry.moved && cancel_.Requested() == platform::Stop::kNone) {
    entry.moved = true;
    entry.stage = Entry::Stage::kWaiting;
    ++waiting_;
    entry.job->message->Rewind();
    return;
  }
  Outcome last = outcome;
  if (last.reply.code / 100 == 4) last.state = State::kDeferred;  // the server asks for another time
  Tell(entry, last);
}

void JobQueue::Tell(Entry& entry, const Outcome& outcome) {
  entry.stage = Entry::Stage::kSettled;
  entry.outcome = outcome;
  entry.outcome.begun = outcome.begun || entry.moved;
  source_->Decided(*entry.job, entry.outcome);
  told_ = true;
  exhausted_ = false;
  while (!entries_.empty() && entries_.front().stage == Entry::Stage::kSettled) {
    const Entry& first = entries_.front();
    source_->Finished(*first.job, first.outcome);
    const int times = breaker_.TimeToAsk(first.outcome);
    if (times != 0 && !given_up_) given_up_ = !source_->GoOn(first.outcome, times);
    entries_.Pop();
    if (!entries_.empty()) TellLog(entries_.front());
  }
}

void JobQueue::TellLog(Entry& entry) {
  std::string_view lines = entry.log;
  for (auto end = lines.find('\n'); end != std::string_view::npos; end = lines.find('\n')) {
    source_->LogLine(lines.substr(0, end));
    lines.remove_prefix(end + 1);
  }
  entry.log.clear();
}

bool JobQueue::KeepLine(std::size_t place, std::string_view line) {
  std::size_t n = 0;
  while (n < entries_.size() && (entries_[n].stage != Entry::Stage::kSubmitted || place-- > 0)) ++n;
  if (n == 0 || n == entries_.size()) return false;
  entries_[n].log.append(line).push_back('\n');
  return true;
}

bool JobQueue::CatchUp() { return !std::exchange(told_, false) || source_->CaughtUp(); }

}  // namespace quillcast::smtp
