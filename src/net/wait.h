// Waiting for descriptors: every wait of this folder ends at a deadline, or when the person gives up.
#pragma once

#include <poll.h>

#include <vector>

#include "net/deadline.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/result.h"

namespace quillcast::net {

// How long the caller is willing to wait. The functions of this folder that take it fail with
//   kTimedOut      the deadline passed
//   kTryAgain      the person cancelled, to `gives_up_at` or beyond
//   kNoInput       a host has no address
//   kUnavailable   refused or not reachable
//   kIo            the connection broke under way
//   kNotPermitted  a certificate is not trusted
//   kInternal      the system refused us a resource
struct Patience {
  const platform::Clock& clock;
  const platform::CancelToken& cancel;
  platform::Stop gives_up_at = platform::Stop::kAbandon;
  Deadline deadline = Deadline::Never();
};

// Waits until one of the descriptors is ready; poll(2) has filled in their revents. True when one is, false when
// `until` came first. The cancel descriptor lies behind them meanwhile.
Result<bool> WaitAny(std::vector<pollfd>& descriptors, const Patience& patience, const Deadline& until);

// Waits until one descriptor is ready for `events` (POLLIN, POLLOUT).
Result<void> Wait(int fd, short events, const Patience& patience);

}  // namespace quillcast::net
