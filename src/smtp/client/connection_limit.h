// How many connections a run has at a time: as many as were asked for, and no more than the server takes.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>

#include "platform/clock.h"
#include "smtp/outcome.h"

namespace quillcast::smtp {

// Learns from every connection that did not come about while others were there: from then on no more are asked for than
// those. Where the server did not say no, but nothing came of it, more are asked for again after a while.
class ConnectionLimit {
 public:
  static constexpr std::size_t kMost = 50;

  explicit ConnectionLimit(std::size_t asked_for)
      : asked_for_(std::clamp(asked_for, std::size_t{1}, kMost)), most_(asked_for_) {}
  std::size_t most() const { return most_; }
  bool is_lowered() const { return most_ < asked_for_; }
  // Whether it was the server that said so, when asked for one more.
  bool is_told() const { return is_told_; }

  struct Now {
    std::size_t working = 0;  // messages were begun over them
    std::size_t coming = 0;   // not yet; it is not known whether the server takes them
    std::size_t late = 0;     // the same, and it takes long
    std::size_t leaving = 0;  // they say QUIT
    std::size_t in_all() const { return working + coming + late + leaving; }
  };
  // Whether there may be one more. The first comes alone, so that a wrong password is tried once; then their number
  // doubles at most while others are waited for.
  bool MayOpen(const Now& now, platform::Instant moment) const {
    if (now.in_all() >= most_) return false;
    if (now.working == 0) return now.coming + now.late == 0;
    return now.coming < now.working && moment >= not_before_;
  }

  // One came about.
  void Opened() { pause_ = kFirstPause; }
  // Messages were begun over so many at a time, though others that were refused meanwhile had made it seem less.
  void Accepted(std::size_t connections) { most_ = std::max(most_, connections); }
  // One did not, while so many others were there.
  void Failed(const Outcome& why, std::size_t others, platform::Instant moment) {
    if (others == 0) return;
    is_told_ = why.reply.code != 0;
    if (why.reply.code != 0 || why.code == ResultCode::kConnectFailed) return Refused(others);
    not_before_ = moment + pause_;
    pause_ = std::min(pause_ * 2, kLongestPause);
  }
  // The server said that it takes no more than so many.
  void Refused(std::size_t others) { most_ = std::clamp(others, std::size_t{1}, most_); }

 private:
  static constexpr std::chrono::seconds kFirstPause{10};
  static constexpr std::chrono::seconds kLongestPause{600};

  const std::size_t asked_for_;
  std::size_t most_;
  bool is_told_ = false;
  std::chrono::seconds pause_ = kFirstPause;
  platform::Instant not_before_ = platform::Instant::min();
};

}  // namespace quillcast::smtp
