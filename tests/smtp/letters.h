// A mailing of small letters, and what was told of it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "smtp/client/client.h"
#include "smtp/client/client_play.h"

namespace quillcast::smtp {

// "Subject: N", an empty line, ".dot" and the ending, to "rN@example.net". Outcomes have to come in order.
class Letters : public JobSource {
 public:
  enum class Size { kUnknown, kKnown };

  explicit Letters(int count, const std::string& ending = {}, Size size = Size::kUnknown) {
    for (int n = 0; n < count; ++n) {
      const std::string text = "Subject: " + std::to_string(n) + "\r\n\r\n.dot\r\n" + ending;
      sources_.push_back(std::make_unique<TextSource>(text));
      Job job;
      job.envelope.sender = "ada@example.org"_address;
      job.envelope.recipient = *Address::From("r" + std::to_string(n) + "@example.net");
      job.envelope.size = size == Size::kKnown ? text.size() : 0;
      job.message = sources_.back().get();
      jobs_.push_back(job);
    }
  }
  Job* NextJob() override {
    if (next_ == jobs_.size() || (caught_up_ >= fails_at && fails_at > 0)) return nullptr;
    if (on_next) on_next(next_);
    return &jobs_[next_++];
  }
  void GoesOut(Job& job) override { told_ |= NumberOf(job) < 64 ? std::uint64_t{1} << NumberOf(job) : 0; }
  void Decided(Job& job, const Outcome& /*outcome*/) override {
    ++decided;
    sources_[NumberOf(job)].reset();  // whoever reads it from now on reads what is gone
    job.message = nullptr;
    most_ahead = std::max(most_ahead, decided - outcomes.size());
  }
  bool GoOn(const Outcome& /*refusal*/, int /*times*/) override { return goes_on; }
  bool CaughtUp() override {
    if (++caught_up_ >= fails_at && fails_at > 0) return false;
    kept |= std::exchange(told_, 0);
    return true;
  }
  void Finished(Job& job, const Outcome& outcome) override {
    EXPECT_EQ(&job, &jobs_[outcomes.size()]) << "out of order";
    EXPECT_GT(decided, outcomes.size()) << "finished before it was decided";
    outcomes.push_back(outcome);
  }
  void LogLine(std::string_view line) override {
    log.emplace_back(line);
    if (on_line) on_line(line);
  }
  void Waiting() override {
    if (on_waiting) on_waiting();
  }
  void Progress(std::uint64_t, std::uint64_t) override {}

  std::vector<Outcome> outcomes;
  std::vector<std::string> log;
  std::function<void(std::string_view)> on_line;
  std::function<void()> on_waiting;
  std::function<void(std::size_t before)> on_next;  // while a letter is made, with so many before it
  std::atomic<std::uint64_t> kept = 0;              // a bit for each of the first 64 that was recorded as going out
  int fails_at = 0;                                 // the record that fails, as those behind it do; 0 for none
  std::size_t decided = 0;
  std::size_t most_ahead = 0;  // how many were decided before the oldest that was not told
  bool goes_on = true;         // after refusals

 private:
  std::size_t NumberOf(const Job& job) const { return static_cast<std::size_t>(&job - jobs_.data()); }

  std::vector<std::unique_ptr<TextSource>> sources_;
  std::vector<Job> jobs_;
  std::size_t next_ = 0;
  std::uint64_t told_ = 0;
  int caught_up_ = 0;
};

}  // namespace quillcast::smtp
