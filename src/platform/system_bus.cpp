#include "platform/system_bus.h"

#include <algorithm>
#include <cerrno>

namespace quillcast::platform {

bool WaitForBus(sd_bus* bus, std::chrono::steady_clock::time_point end) {
  constexpr std::chrono::microseconds kLook(100'000);
  const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - std::chrono::steady_clock::now());
  if (left.count() <= 0) return false;
  const int waited = sd_bus_wait(bus, static_cast<std::uint64_t>(std::min(left, kLook).count()));
  return waited >= 0 || waited == -EINTR;
}

SystemBus OpenSystemBus(const std::string& address, std::chrono::steady_clock::time_point end,
                        const CancelToken& cancel) {
  sd_bus* made = nullptr;
  if (sd_bus_new(&made) < 0) return nullptr;
  SystemBus bus(made);
  if (sd_bus_set_address(made, address.c_str()) < 0 || sd_bus_set_bus_client(made, 1) < 0 || sd_bus_start(made) < 0)
    return nullptr;
  for (int ready = sd_bus_is_ready(made); ready <= 0; ready = sd_bus_is_ready(made)) {
    if (ready < 0 || cancel.Requested() != Stop::kNone) return nullptr;
    const int done = sd_bus_process(made, nullptr);
    if (done < 0 || (done == 0 && !WaitForBus(made, end))) return nullptr;
  }
  return bus;
}

}  // namespace quillcast::platform
