#include "net/wait.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <span>

namespace quillcast::net {
namespace {

bool GaveUp(const Patience& patience) { return patience.cancel.Requested() >= patience.gives_up_at; }

Error Cancelled() { return {Failure::kTryAgain, "It was cancelled."}; }

// The last of them is the cancel descriptor.
Result<bool> PollUntil(std::span<pollfd> all, const Patience& patience, const Deadline& until) {
  for (;;) {
    if (GaveUp(patience)) return Cancelled();
    const int ready = ::poll(all.data(), all.size(), until.PollTimeout(patience.clock.Monotonic()));
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

pollfd OfCancel(const Patience& patience) { return {patience.cancel.PollFd(), POLLIN, 0}; }

}  // namespace

Result<bool> WaitAny(std::vector<pollfd>& descriptors, const Patience& patience, const Deadline& until) {
  descriptors.push_back(OfCancel(patience));
  auto ready = PollUntil(descriptors, patience, until);
  descriptors.pop_back();
  return ready;
}

Result<void> Wait(int fd, short events, const Patience& patience) {
  std::array both{pollfd{fd, events, 0}, OfCancel(patience)};
  const auto ready = PollUntil(both, patience, patience.deadline);
  if (!ready) return ready.error();
  if (!*ready) return Error{Failure::kTimedOut, "It took too long."};
  return {};
}

}  // namespace quillcast::net
