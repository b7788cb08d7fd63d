#include "smtp/client/job_queue.h"

#include <algorithm>
#include <utility>

namespace quillcast::smtp {
namespace {

// How many of the same in a row are enough; 0 for what another message may not meet. Sign-ins are few, for servers lock
// an account that fails too often.
int LimitOf(const Outcome& outcome) {
  if (IsOfWay(outcome)) return 20;
  if (IsOfSignIn(outcome)) return 3;
  return IsOfSender(outcome) ? 20 : 0;
}

bool IsTheSame(const Outcome& one, const Outcome& other) {
  if (IsOfWay(one) && IsOfWay(other)) return true;
  return one.code == other.code && one.reply.code == other.reply.code && one.reply.enhanced == other.reply.enhanced;
}

}  // namespace

int Breaker::TimeToAsk(const Outcome& outcome) {
  const int limit = LimitOf(outcome);
  if (limit == 0) {
    times_ = 0;
    return 0;
  }
  const bool same = times_ > 0 && IsTheSame(outcome, last_);
  if (!same) last_ = outcome;
  times_ = same ? times_ + 1 : 1;
  return times_ % limit == 0 ? times_ : 0;
}

void JobQueue::Begin(JobSource& source) {
  source_ = &source;
  exhausted_ = given_up_ = is_over_ = false;
  lost_in_a_row_ = lost_together_ = 0;
}

Job* JobQueue::Next() {
  due_.reset();
  bool others_may = true;
  for (const std::uint64_t number : waiting_) {
    Entry& entry = EntryOf(number);
    const Passage passage = PassageOf(entry);
    if (passage == Passage::kFree) return entry.job;
    others_may = passage == Passage::kHeld;
    if (!others_may) break;
  }
  if (Job* job = others_may ? TakeNew() : nullptr) return job;
  if (!waiting_.empty()) due_ = source_->NextDue().value_or(platform::Instant::max());  // it is not over with them
  if (due_ || held_.empty() || IsInDoubt() || submitted_ > 0) return nullptr;
  TellHeld();
  return Next();  // some may be tried again
}

Passage JobQueue::PassageOf(Entry& entry) {
  const Passage passage = entry.may_go || IsStopped() ? Passage::kFree : source_->MayGo(*entry.job);
  entry.may_go = passage == Passage::kFree;
  return passage;
}

Job* JobQueue::TakeNew() {
  if (exhausted_ || given_up_ || entries_.size() >= kMostAhead || IsStopped()) return nullptr;
  Job* job = source_->NextJob();
  if (job == nullptr) {
    if (!waiting_.empty()) return nullptr;
    due_ = source_->NextDue();
    exhausted_ = !due_;
    return nullptr;
  }
  Entry& entry = entries_.Push();
  entry.job = job;
  entry.moved = false;
  entry.may_go = true;
  entry.log.clear();
  Wait(first_ + entries_.size() - 1);
  return job;
}

void JobQueue::WaitAll() {
  lost_together_ = 0;
  for (const std::uint64_t number : std::exchange(held_, {})) Wait(number);
  for (const std::uint64_t number : std::exchange(in_doubt_, {})) Wait(number);
}

void JobQueue::WayLost() {
  WaitAll();
  for (const std::uint64_t number : waiting_) EntryOf(number).may_go = false;
  for (std::size_t n = 0; n < entries_.size(); ++n) entries_[n].moved = false;
}

void JobQueue::GoOnceMore() {
  lost_together_ = 0;
  for (const std::uint64_t number : std::exchange(in_doubt_, {})) {
    EntryOf(number).moved = true;
    Wait(number);
  }
}

void JobQueue::WayFound() {
  HoldLost();
  TellHeld();
}

void JobQueue::HoldLost() {
  lost_in_a_row_ += std::exchange(lost_together_, 0);
  held_.insert(held_.end(), in_doubt_.begin(), in_doubt_.end());
  in_doubt_.clear();
}

void JobQueue::TellHeld() {
  for (const std::uint64_t number : std::exchange(held_, {})) {
    Entry& entry = EntryOf(number);
    Tell(entry, Outcome(entry.outcome));
  }
}

void JobQueue::Leave() {
  is_over_ = true;
  FailAll(Left());
}

void JobQueue::Wait(std::uint64_t number) {
  EntryOf(number).stage = Entry::Stage::kWaiting;
  waiting_.insert(std::upper_bound(waiting_.begin(), waiting_.end(), number), number);
}

std::uint64_t JobQueue::TakeWaiting(Waiting::const_iterator which) {
  const std::uint64_t number = *which;
  waiting_.erase(which);
  return number;
}

void JobQueue::Submitted(std::size_t lane) {
  const std::uint64_t number = TakeWaiting(TheNext());
  Entry& entry = EntryOf(number);
  entry.stage = Entry::Stage::kSubmitted;
  entry.losses_before = losses_;
  lanes_[lane].submitted.Push() = number;
  ++submitted_;
  source_->GoesOut(*entry.job);
  told_ = true;
}

void JobQueue::Move() { EntryOf(*TheNext()).moved = true; }

// Whoever goes on with the run comes to those of whom nothing is out, whatever ended their connection.
void JobQueue::Fail(const Outcome& outcome) { Tell(EntryOf(TakeWaiting(TheNext())), IsStopped() ? Left() : outcome); }

void JobQueue::GiveUp(Outcome why) {
  given_up_ = true;
  why.whereabouts = Whereabouts::kNotOut;
  FailAll(why);
}

void JobQueue::FailAll(const Outcome& outcome) {
  WaitAll();
  while (!waiting_.empty()) Tell(EntryOf(TakeWaiting(waiting_.begin())), IsStopped() ? Left() : outcome);
}

void JobQueue::Settle(std::size_t lane, const Outcome& outcome) {
  const std::uint64_t number = lanes_[lane].submitted.front();
  lanes_[lane].submitted.Pop();
  --submitted_;
  Entry& entry = EntryOf(number);
  if (outcome.is_decided()) {
    lost_in_a_row_ = lost_together_ = 0;
    const bool is_later = entry.losses_before == losses_;
    goes_on_well_ = goes_on_well_ || is_later;
    if (is_later) TellHeld();
    return Tell(EntryOf(number), outcome);
  }
  if (IsStopped()) return Tell(entry, Left());
  const bool moves = outcome.whereabouts == Whereabouts::kNotOut && !entry.moved;
  if (moves || outcome.whereabouts == Whereabouts::kNoRoom) {
    entry.moved = entry.moved || moves;
    ComesBack(entry, outcome);
    return Wait(number);
  }
  Outcome last = outcome;
  last.whereabouts = Whereabouts::kDecided;
  if (last.reply.code / 100 == 4) last.state = State::kDeferred;  // the server asks for another time
  if (!waits_for_way_ || last.reply.code != 0) return Tell(entry, last);
  entry.stage = Entry::Stage::kInDoubt;
  ComesBack(entry, last);
  entry.outcome = std::move(last);
  in_doubt_.push_back(number);
  ++lost_together_;
  ++losses_;
  goes_on_well_ = false;
}

void JobQueue::ComesBack(Entry& entry, const Outcome& why) {
  entry.job->message->Rewind();
  entry.may_go = false;
  source_->ComesBack(*entry.job, why);
  told_ = true;
}

void JobQueue::Tell(Entry& entry, const Outcome& outcome) {
  entry.stage = Entry::Stage::kSettled;
  entry.outcome = outcome;
  source_->Decided(*entry.job, entry.outcome);
  told_ = true;
  exhausted_ = false;
  while (!entries_.empty() && entries_.front().stage == Entry::Stage::kSettled) {
    const Entry& first = entries_.front();
    source_->Finished(*first.job, first.outcome);
    const int times = breaker_.TimeToAsk(first.outcome);
    if (times != 0 && !given_up_) given_up_ = !source_->GoOn(first.outcome, times);
    entries_.Pop();
    ++first_;
    TellLines(between_);
    if (!entries_.empty()) TellLines(entries_.front().log);
  }
}

void JobQueue::TellLines(std::string& lines) {
  std::string_view left = lines;
  for (auto end = left.find('\n'); end != std::string_view::npos; end = left.find('\n')) {
    source_->LogLine(left.substr(0, end));
    left.remove_prefix(end + 1);
  }
  lines.clear();
}

void JobQueue::TellLine(std::size_t lane, std::size_t place, std::string_view line) {
  Lane& own = lanes_[lane];
  const bool is_of_job = place < own.submitted.size();
  const bool is_alone = submitted_ == own.submitted.size() && own.lines.empty() && between_.empty();
  if (is_of_job ? own.submitted[place] == first_ : is_alone) return source_->LogLine(line);
  std::string& kept = is_of_job ? EntryOf(own.submitted[place]).log : own.lines;
  kept.append(line).push_back('\n');
}

void JobQueue::EndLines(std::size_t lane) {
  between_ += lanes_[lane].lines;
  lanes_[lane].lines.clear();
  if (submitted_ == 0) TellLines(between_);
}

bool JobQueue::HasOldest(std::size_t lane) const {
  const auto& submitted = lanes_[lane].submitted;
  return !submitted.empty() && submitted.front() == first_;
}

bool JobQueue::CatchUp() { return !std::exchange(told_, false) || source_->CaughtUp(); }

}  // namespace quillcast::smtp
