#include "net/event_loop.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace quillcast::net {
namespace {

Error LoopError(int error_number) {
  return {Failure::kInternal, Say("Cannot wait for connections: {}.", std::strerror(error_number)), {}};
}

std::uint32_t MaskOf(Interest interest) {
  if (interest == Interest::kNone) return 0;
  return interest == Interest::kRead ? EPOLLIN : EPOLLOUT;
}

}  // namespace

Result<EventLoop> EventLoop::Create() {
  platform::UniqueFd fd(::epoll_create1(EPOLL_CLOEXEC));
  if (!fd) return LoopError(errno);
  return EventLoop(std::move(fd));
}

Result<void> EventLoop::Control(int operation, int fd, Interest interest, void* owner) {
  epoll_event event{};
  event.events = MaskOf(interest);
  event.data.ptr = owner;
  if (::epoll_ctl(fd_.get(), operation, fd, &event) != 0) return LoopError(errno);
  return {};
}

Result<void> EventLoop::Add(int fd, Interest interest, void* owner) {
  return Control(EPOLL_CTL_ADD, fd, interest, owner);
}

Result<void> EventLoop::Change(int fd, Interest interest, void* owner) {
  return Control(EPOLL_CTL_MOD, fd, interest, owner);
}

Result<std::span<const EventLoop::Ready>> EventLoop::Wait(std::optional<std::chrono::milliseconds> timeout) {
  constexpr std::int64_t kLongestWait = 3'600'000;
  const int wait = timeout ? static_cast<int>(std::clamp<std::int64_t>(timeout->count(), 0, kLongestWait)) : -1;
  const int count = ::epoll_wait(fd_.get(), events_.data(), kBatch, wait);
  if (count < 0 && errno != EINTR) return LoopError(errno);

  const auto events = std::span(events_).first(static_cast<std::size_t>(std::max(count, 0)));
  std::transform(events.begin(), events.end(), ready_.begin(), [](const epoll_event& event) {
    const bool lost = (event.events & (EPOLLERR | EPOLLHUP)) != 0;
    return Ready{event.data.ptr, lost || (event.events & EPOLLIN) != 0, lost || (event.events & EPOLLOUT) != 0};
  });
  return std::span<const Ready>(ready_).first(events.size());
}

}  // namespace quillcast::net
