// The way to the servers where it is lost under way: how long a run waits for it, and when it tries again.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>

#include "platform/clock.h"
#include "smtp/outcome.h"

namespace quillcast::smtp {

// Only what was there can be lost: a name that is misspelt, or a server that is not up, is told at once.
class LostWay {
 public:
  explicit LostWay(std::chrono::seconds patience) : patience_(patience) {}

  // A connection came about.
  void Found() {
    was_there_ = true;
    since_.reset();
    pause_ = kFirstPause;
  }

  // None came about, and there is no other. True where the message that wants one waits on, until again().
  bool Outlasts(const Outcome& why, platform::Instant now) {
    if (!was_there_ || !IsOutOfReach(why)) return false;
    if (!since_) since_ = now;
    const platform::Instant end = *since_ + patience_;
    if (now >= end) return false;
    again_ = std::min(now + pause_, end);
    pause_ = std::min(pause_ * 2, kLongestPause);
    return true;
  }

  // Not before then; nothing where the way is not lost, or is being tried.
  const std::optional<platform::Instant>& again() const { return again_; }
  void Tries() { again_.reset(); }

 private:
  static constexpr std::chrono::seconds kFirstPause{1};
  static constexpr std::chrono::seconds kLongestPause{30};

  // Nobody said anything: a server that answers is there.
  static bool IsOutOfReach(const Outcome& why) {
    constexpr std::array kCodes = {ResultCode::kConnectFailed, ResultCode::kConnectTimeout, ResultCode::kConnectionLost,
                                   ResultCode::kHostNotFound,  ResultCode::kResolveTimeout, ResultCode::kReplyTimeout};
    return why.reply.code == 0 && std::find(kCodes.begin(), kCodes.end(), why.code) != kCodes.end();
  }

  const std::chrono::seconds patience_;
  bool was_there_ = false;
  std::optional<platform::Instant> since_;
  std::optional<platform::Instant> again_;
  std::chrono::seconds pause_ = kFirstPause;
};

}  // namespace quillcast::smtp
