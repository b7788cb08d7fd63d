// A request to stop, shared between the one who asks (a signal handler, a Cancel button) and the one who works.
#pragma once

#include <atomic>
#include <memory>

#include "platform/file.h"

namespace quillcast::platform {

// kStop: start nothing new, finish what is under way. kAbandon: give up what is under way too.
enum class Stop { kNone, kStop, kAbandon };

// Each call of Request raises the level by one. Safe in a signal handler.
class CancelToken {
 public:
  // Where the system has no descriptor left it can still be asked, but wakes no poll(2).
  CancelToken();
  void Request();
  // The level by now. It never falls.
  Stop Requested() const { return static_cast<Stop>(level_.load(std::memory_order_relaxed)); }
  // Becomes readable at the first request and stays so until Drain; for poll(2). -1 when none could be made.
  int PollFd() const { return event_.get(); }
  // Makes PollFd quiet again until the next request.
  void Drain() const;

 private:
  std::atomic<int> level_ = 0;
  UniqueFd event_;
};

}  // namespace quillcast::platform
