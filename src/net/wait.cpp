#include "net/wait.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace quillcast::net {
namespace {

constexpr std::size_t kMostDescriptors = 32;

bool GaveUp(const Patience& patience) { return patience.cancel.Requested() >= patience.gives_up_at; }

Error Cancelled() { return {Failure::kTryAgain, "It was cancelled."}; }

// One poll(2), with the cancel descriptor behind the caller's.
int PollOnce(std::span<pollfd> all, std::span<pollfd> ours, int timeout) {
  std::copy(ours.begin(), ours.end(), all.begin());
  const int ready = ::poll(all.data(), all.size(), timeout);
  std::copy_n(all.begin(), ours.size(), ours.begin());
  return ready;
}

}  // namespace

Result<bool> WaitAny(std::span<pollfd> descriptors, const Patience& patience, const Deadline& until) {
  std::array<pollfd, kMostDescriptors> room{};
  const std::span ours = descriptors.first(std::min(descriptors.size(), kMostDescriptors - 1));
  const std::span all = std::span(room).first(ours.size() + 1);
  for (;;) {
    if (GaveUp(patience)) return Cancelled();
    all.back() = {patience.cancel.PollFd(), POLLIN, 0};
    const int ready = PollOnce(all, ours, until.PollTimeout(patience.clock.Monotonic()));
    if (ready < 0 && errno != EINTR)
      return Error{Failure::kInternal, Say("Cannot wait for the network: {}.", std::strerror(errno))};
    if (ready > 0 && all.back().revents != 0) {
      // A request below our level: made quiet first and judged after, so that one that comes in between wakes us again.
      patience.cancel.Drain();
      if (GaveUp(patience)) return Cancelled();
      if (ready > 1) return true;
    } else if (ready > 0) {
      return true;
    }
    if (until.Passed(patience.clock.Monotonic())) return false;
  }
}

Result<void> Wait(int fd, short events, const Patience& patience) {
  pollfd one{fd, events, 0};
  const auto ready = WaitAny({&one, 1}, patience, patience.deadline);
  if (!ready) return ready.error();
  if (!*ready) return Error{Failure::kTimedOut, "It took too long."};
  return {};
}

}  // namespace quillcast::net
