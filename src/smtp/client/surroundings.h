// What the connections of one client share.
#pragma once

#include <functional>

#include "net/deadline.h"
#include "net/tls_context.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "smtp/client/client_options.h"
#include "smtp/client/connection_watch.h"
#include "smtp/client/job_queue.h"
#include "smtp/client/send_window.h"

namespace quillcast::smtp {

struct Surroundings {
  const ClientOptions& options;
  const platform::Clock& clock;
  const platform::CancelToken& cancel;
  SendWindow& window;
  JobQueue& jobs;
  std::function<Result<net::TlsContext*>()> tls;  // made when it is first needed: reading the authorities takes long
  JobSource* source = nullptr;
  ConnectionWatch* watch = nullptr;              // null where nobody looks on
  net::Deadline until = net::Deadline::Never();  // for every step together
  platform::Instant shown = clock.Monotonic();   // when the conversation was shown last

  bool Stopped() const { return cancel.Requested() >= platform::Stop::kStop; }
  bool Abandoned() const { return cancel.Requested() >= platform::Stop::kAbandon; }
  // By when a step has to be done that begins now and may take so long.
  net::Deadline StepUntil(std::chrono::milliseconds longest, platform::Instant from) const {
    return Earlier(until, net::Deadline::After(from, longest));
  }
  net::Deadline StepUntil(std::chrono::seconds longest) const { return StepUntil(longest, clock.Monotonic()); }
};

// How long a wait may be before what was said is shown, and the time between two such waits, because that costs a
// write. Longer than the wait that takes a read one call alone.
inline constexpr std::chrono::milliseconds kUnshown{250};

// Calls `wait` with the moment until which it is to wait, and gives what it gives; `is_late` says of that whether
// nothing came. It begins now, at `began`. Where it takes its time the conversation so far is shown meanwhile.
template <typename Wait, typename IsLate>
auto WaitAndShow(Surroundings& around, platform::Instant began, const net::Deadline& until, const Wait& wait,
                 const IsLate& is_late) {
  if (began - around.shown < kUnshown) {
    auto got = wait(Earlier(until, net::Deadline::After(began, kUnshown)));
    if (!is_late(got) || until.Passed(around.clock.Monotonic())) return got;
  }
  around.source->Waiting();
  around.shown = around.clock.Monotonic();
  return wait(until);
}

}  // namespace quillcast::smtp
