#include "run/run_progress.h"

#include <algorithm>

#include "run/run_words.h"

namespace quillcast::run {
namespace {

using namespace std::chrono_literals;
using platform::Duration;

constexpr Duration kOfLate = 10s;  // of work, over which a rate is told
constexpr auto kMoment = 1s;       // a wait so short is not told, and two ends so near each other are one

std::chrono::milliseconds Whole(Duration duration) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(duration);
}

}  // namespace

void RunProgress::Begins(std::int64_t total) {
  total_ = total;
  stage_ = Stage::kGoes;
  counted_to_ = idle_until_ = clock_.Monotonic();
}

void RunProgress::CountTime() {
  const auto now = clock_.Monotonic();
  const auto from = std::min(now, std::max(counted_to_, idle_until_));
  const bool works = stage_ == Stage::kGoes && held_ != UnderWay::kNothing && !lost_;
  if (works) worked_ += now - from;
  counted_to_ = now;
}

// Somebody who is tried again was counted once already.
void RunProgress::Finished(const RecipientResult& result) {
  CountTime();
  idle_until_ = counted_to_;
  lost_.reset();
  ++tries_;
  const bool is_first = result.tries == 1;
  if (is_first) ++tried_;
  if (result.again) {
    if (is_first) ++again_;
    return;
  }
  ++done_;
  if (!is_first) --again_;
}

void RunProgress::GoesOut() {
  CountTime();
  idle_until_ = counted_to_;
  wait_.reset();
  lost_.reset();
}

// While several wait for their next try, each for another moment, the end creeps on though messages go out: so the end
// that was told first stays, and is over in its time.
void RunProgress::Waits(const Sentence& why, Moment until) {
  CountTime();
  lost_.reset();
  const auto left = until - clock_.Now();
  if (tried_ >= total_ && left >= kMoment) idle_until_ = counted_to_ + std::chrono::duration_cast<Duration>(left);
  if (wait_ && until - wait_->until < kMoment && wait_->until - until < kMoment) {
    wait_->why = why;
    return;
  }
  wait_.reset();
  if (left >= kMoment) wait_ = {why, until};
}

void RunProgress::WayLost(const Sentence& why, Moment until) {
  CountTime();
  wait_.reset();
  lost_ = {why, until};
}

void RunProgress::Asks() {
  CountTime();
  stage_ = Stage::kAsks;
}

void RunProgress::Answered() {
  CountTime();
  stage_ = Stage::kGoes;
}

void RunProgress::IsHeld(UnderWay what) {
  CountTime();
  wait_.reset();
  held_ = what;
}

void RunProgress::IsLetGo() {
  CountTime();
  held_.reset();
}

void RunProgress::Ends() {
  CountTime();
  stage_ = Stage::kEnded;
}

ProgressLook RunProgress::Now() {
  CountTime();
  return {done_, stage_ == Stage::kEnded ? 0 : again_, total_, Line()};
}

Sentence RunProgress::Line() {
  if (stage_ == Stage::kAsks) return {};
  if (stage_ != Stage::kGoes) return Rate();
  if (held_) return HeldLine();
  for (const auto& pause : {lost_, wait_}) {
    if (pause && clock_.Now() < pause->until) return WaitsUntil(pause->why, pause->until, clock_);
  }
  return lost_ ? Sentence("The way to the server was lost, and is being tried now.") : Rate();
}

// Without a way nothing is under way that would have to be waited for.
Sentence RunProgress::HeldLine() const {
  if (lost_) {
    return Say("Paused. {} of {} are done. The way to the server is lost, and is tried again when you go on.",
               NumberValue(done_), NumberValue(total_));
  }
  if (*held_ == UnderWay::kSomething) return "Pausing as soon as what is under way has its answer.";
  return Say("Paused. {} of {} are done.", NumberValue(done_), NumberValue(total_));
}

// A limit lets so many out at once and then none until their time is over: that is theirs as well.
RunRate RunProgress::RateOf(std::int64_t tries, Duration worked) const {
  RunRate rate{tries, Whole(worked)};
  if (limit_) rate.within = std::max(rate.within, tries * std::chrono::milliseconds(limit_->within) / limit_->messages);
  return rate;
}

// Of late, which is no less than the time of the limit, or where nothing was done then and at the end, of the whole
// run.
Sentence RunProgress::Rate() {
  const RunRate whole = RateOf(tries_, worked_);
  if (stage_ != Stage::kGoes) return DescribeRate(whole, {});
  samples_.push_back({worked_, tries_});
  const Duration look_back = limit_ ? std::max<Duration>(kOfLate, limit_->within) : kOfLate;
  while (samples_.size() > 1 && samples_[1].worked <= worked_ - look_back) samples_.pop_front();
  const Duration of_late = worked_ - samples_.front().worked;
  const RunRate late = RateOf(tries_ - samples_.front().tries, of_late);
  const bool says_something = late.messages > 0 && of_late >= look_back / 2;
  // Each of those takes one more try at least.
  return DescribeRate(says_something ? late : whole,
                      TimeLeft{total_ - done_, again_ > 0 ? Certainty::kAtLeast : Certainty::kAbout});
}

}  // namespace quillcast::run
