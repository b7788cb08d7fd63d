// The system's D-Bus, with an end to every wait.
#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <memory>
#include <string>

#include "platform/cancel.h"

namespace quillcast::platform {

struct CloseBus {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
using SystemBus = std::unique_ptr<sd_bus, CloseBus>;

// Until the bus has let us in, which a peer that only listens would never do. Null where it did not in time, or after a
// cancel. `address`: "unix:path=...".
SystemBus OpenSystemBus(const std::string& address, std::chrono::steady_clock::time_point end,
                        const CancelToken& cancel);

// Waits for the bus to have something, at most until `end`, and not long without a look at what was cancelled.
// False where it is over.
bool WaitForBus(sd_bus* bus, std::chrono::steady_clock::time_point end);

}  // namespace quillcast::platform
