// The way to the servers where it is lost under way: how long a run waits for it, and when it tries again.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <utility>

#include "platform/clock.h"
#include "smtp/outcome.h"

namespace quillcast::smtp {

// Only what was there can be lost: a name that is misspelt, or a server that is not up, is told at once. `was_there`:
// in a run before this one.
class LostWay {
 public:
  LostWay(std::chrono::seconds patience, bool was_there) : patience_(patience), was_there_(was_there) {}

  // A connection came about.
  void Found() {
    was_there_ = true;
    if (!falters_) Begins();
  }
  // Messages go over it.
  void Works() {
    if (std::exchange(falters_, false)) Begins();
  }

  // None came about, and there is no other. True where the message that wants one waits on, until again(). `held`: for
  // how long somebody held the run till now, in all.
  bool Outlasts(const Outcome& why, platform::Instant now, platform::Duration held) {
    if (patience_.count() == 0 || !was_there_ || !IsOutOfReach(why)) return false;
    is_over_ = !Waits(now, held);
    return !is_over_;
  }
  // They come about, and one message after the other is lost: a server that starts anew, or one behind which there is
  // none. True where those wait until again(); once only, and half a minute at most, for it may be their own doing.
  bool MayFalter() const { return !has_faltered_ && patience_.count() > 0; }
  bool Falters(platform::Instant now, platform::Duration held) {
    if (!MayFalter()) return false;
    const bool took_too_long = falters_ && now >= *since_ + kLongestFalter;
    falters_ = !took_too_long && Waits(now, held);
    has_faltered_ = !falters_;
    return falters_;
  }

  // It was waited for as long as was wanted, in vain.
  bool is_over() const { return is_over_; }
  // Not before then; nothing where the way is not lost, or is being tried.
  const std::optional<platform::Instant>& again() const { return again_; }
  // While the run was held, and since the way might have been tried, nobody waited for it.
  void Tries(platform::Instant now, platform::Duration held) {
    const platform::Duration too_late = again_ && now > *again_ ? now - *again_ : platform::Duration();
    if (since_) *since_ += std::max(too_late, held - held_);
    held_ = held;
    again_.reset();
  }

 private:
  static constexpr std::chrono::seconds kFirstPause{1};
  static constexpr std::chrono::seconds kLongestPause{30};
  static constexpr std::chrono::seconds kLongestFalter{30};  // a server starts anew within that

  void Begins() {
    since_.reset();
    pause_ = kFirstPause;
  }

  bool Waits(platform::Instant now, platform::Duration held) {
    since_ = since_ ? *since_ + (held - held_) : now;  // it may have been held while the way was tried
    held_ = held;
    const platform::Instant end = *since_ + patience_;
    if (now >= end) return false;
    again_ = std::min(now + pause_, end);
    pause_ = std::min(pause_ * 2, kLongestPause);
    return true;
  }

  // Nobody said anything; or what answers is not the server that was there, as the page of a hotel's network that wants
  // a sign-in first; or it is, and says that it is not ready yet, or still counts those that were lost.
  static bool IsOutOfReach(const Outcome& why) {
    constexpr std::array kCodes = {ResultCode::kConnectFailed, ResultCode::kConnectTimeout, ResultCode::kConnectionLost,
                                   ResultCode::kHostNotFound,  ResultCode::kResolveTimeout, ResultCode::kReplyTimeout,
                                   ResultCode::kBadResponse,   ResultCode::kGreetingRefused};
    const bool is_known = std::find(kCodes.begin(), kCodes.end(), why.code) != kCodes.end();
    return is_known && (why.reply.code == 0 || why.reply.code / 100 == 4);
  }

  const std::chrono::seconds patience_;
  bool was_there_;
  bool is_over_ = false;
  bool falters_ = false;
  bool has_faltered_ = false;  // for as long as was wanted
  std::optional<platform::Instant> since_;
  platform::Duration held_{};  // that since_ knows of
  std::optional<platform::Instant> again_;
  std::chrono::seconds pause_ = kFirstPause;
};

}  // namespace quillcast::smtp
