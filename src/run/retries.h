// Who is tried again in the same run, and when: in 24 octets each, however many they are.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "platform/clock.h"
#include "run/pace/pace.h"
#include "run/pace/pace_rules.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// Somebody to be tried again.
struct Retry {
  std::int64_t position = 0;
  Domain domain{};
  int tries = 0;   // that were made in this run
  int before = 0;  // in runs that it goes on with
};

class Retries {
 public:
  // The time of day may be set meanwhile, and the computer be asleep: they wait by the time since its start.
  Retries(const RetryRules& rules, const platform::Clock& clock) : rules_(rules), clock_(clock) {}

  // Whether this is the kind of outcome that another time may change, and nothing can be doubled by another try: the
  // server asked for another time, or there was no way to it.
  static bool IsWorthAnother(const smtp::Outcome& outcome);

  // Whether one who had so many tries, in all runs, is tried again after this outcome.
  bool Takes(const smtp::Outcome& outcome, int tries) const { return tries <= rules_.times && IsWorthAnother(outcome); }
  // After its last try. False where it had as many as it may have: it is not tried again.
  bool Defer(const Retry& retry);
  // How many wait for their time.
  std::int64_t size() const { return size_; }
  // When the first of them is due; it may be over.
  std::optional<platform::Instant> NextDue() const;
  bool IsOneDue() const;
  // One that is due.
  std::optional<Retry> TakeDue();

 private:
  struct Waiting {
    std::int64_t position;
    platform::Uptime due;
    Domain domain;
    int before;
  };
  using Row = std::deque<Waiting>;

  const Row* FirstRow() const;

  RetryRules rules_;
  const platform::Clock& clock_;
  std::vector<Row> rows_;  // by the tries made in all; who has had as many waits as long, so that each is in order
  std::int64_t size_ = 0;
};

}  // namespace quillcast::run
