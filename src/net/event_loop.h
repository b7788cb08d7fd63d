// Waits for many descriptors at once (epoll, level-triggered).
#pragma once

#include <sys/epoll.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/file.h"
#include "platform/result.h"

namespace quillcast::net {

// What an owner waits for. A lost connection is told to all, kNone included.
enum class Interest { kNone, kRead, kWrite };

// For one thread. The descriptors and what `owner` points to stay the caller's.
class EventLoop {
 public:
  // One descriptor that can go on. A lost connection counts as readable and writable: the next call on it tells.
  struct Ready {
    void* owner;
    bool readable;
    bool writable;
  };

  // All its failures are kInternal: the system refused a descriptor or a call.
  static Result<EventLoop> Create();

  // `owner` comes back with each event. A descriptor that is closed leaves by itself.
  Result<void> Add(int fd, Interest interest, void* owner);
  Result<void> Change(int fd, Interest interest, void* owner);

  // Up to 64 events; none when the time is over, an hour at most, or a signal came. Without a timeout it waits for
  // ever.
  Result<std::span<const Ready>> Wait(std::optional<std::chrono::milliseconds> timeout);

 private:
  static constexpr std::size_t kBatch = 64;

  explicit EventLoop(platform::UniqueFd fd) : fd_(std::move(fd)) {}
  Result<void> Control(int operation, int fd, Interest interest, void* owner);

  platform::UniqueFd fd_;
  std::array<epoll_event, kBatch> events_{};
  std::array<Ready, kBatch> ready_{};
};

}  // namespace quillcast::net
