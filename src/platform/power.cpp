#include "platform/power.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>

#include "platform/program_run.h"
#include "platform/text.h"

namespace quillcast::platform {
namespace {

struct BusClose {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, BusClose>;

Error Refused(std::string_view who_and_why) {
  constexpr const char* kByHand = "Switch it off by hand; the run is finished and reported.";
  if (who_and_why.empty()) return {Failure::kNotPermitted, "The system did not let itself be switched off.", kByHand};
  return {Failure::kNotPermitted, Say("The system did not let itself be switched off: {}", who_and_why), kByHand};
}

// Until the bus has let us in, which a peer that only listens would never do. Null where it did not in time.
Bus OpenBus(const PowerPlaces& places) {
  sd_bus* made = nullptr;
  if (sd_bus_new(&made) < 0) return nullptr;
  Bus bus(made);
  if (sd_bus_set_address(made, places.bus.c_str()) < 0 || sd_bus_set_bus_client(made, 1) < 0 || sd_bus_start(made) < 0)
    return nullptr;
  const auto end = std::chrono::steady_clock::now() + places.patience;
  for (int ready = sd_bus_is_ready(made); ready <= 0; ready = sd_bus_is_ready(made)) {
    const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - std::chrono::steady_clock::now());
    if (ready < 0 || left.count() <= 0) return nullptr;
    const int done = sd_bus_process(made, nullptr);
    if (done < 0 || (done == 0 && sd_bus_wait(made, static_cast<std::uint64_t>(left.count())) < 0)) return nullptr;
  }
  return bus;
}

// Whether an error means that nobody was there to hear the question.
bool NobodyHeard(const sd_bus_error& error) {
  constexpr std::array<std::string_view, 5> kNames = {SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER,
                                                      SD_BUS_ERROR_UNKNOWN_OBJECT, SD_BUS_ERROR_UNKNOWN_INTERFACE,
                                                      SD_BUS_ERROR_UNKNOWN_METHOD};
  const std::string_view name = error.name == nullptr ? "" : error.name;
  return std::find(kNames.begin(), kNames.end(), name) != kNames.end() ||
         name.starts_with("org.freedesktop.DBus.Error.Spawn.") || name.starts_with("org.freedesktop.systemd1.");
}

// What the login manager answered; nothing where it could not be asked.
std::optional<Result<void>> AskLoginManager(const PowerPlaces& places) {
  const Bus bus = OpenBus(places);
  if (!bus) return std::nullopt;
  sd_bus_set_method_call_timeout(bus.get(),
                                 static_cast<std::uint64_t>(std::chrono::microseconds(places.patience).count()));
  sd_bus_error error{};
  constexpr int kAskNobody = 0;
  const int called = sd_bus_call_method(bus.get(), "org.freedesktop.login1", "/org/freedesktop/login1",
                                        "org.freedesktop.login1.Manager", "PowerOff", &error, nullptr, "b", kAskNobody);
  std::optional<Result<void>> answer;
  if (called >= 0) {
    answer = Result<void>();
  } else if (!NobodyHeard(error)) {
    answer = Refused(error.message == nullptr ? std::strerror(-called) : Printable(error.message, 200));
  }
  sd_bus_error_free(&error);
  return answer;
}

Result<void> AskServiceManager(const PowerPlaces& places) {
  const std::array<std::string, 4> words = {places.service_manager, "poweroff", "--ignore-inhibitors",
                                            "--no-ask-password"};
  const ProgramRun run = RunProgram(words, {.patience = places.patience});
  if (run.end == ProgramEnd::kNotStarted) return Refused("neither a login manager nor a service manager can be asked.");
  if (run.end != ProgramEnd::kExited) return Refused("the service manager gave no answer.");
  return run.status == 0 ? Result<void>() : Refused({});
}

}  // namespace

PowerPlaces PowerPlacesOf(const Environment& environment) {
  return {.bus = environment.Get("DBUS_SYSTEM_BUS_ADDRESS").value_or("unix:path=/run/dbus/system_bus_socket"),
          .service_manager = "systemctl"};
}

Result<void> clsExitWindows::ExitWindows() {
  const auto answer = AskLoginManager(places_);
  return answer ? *answer : AskServiceManager(places_);
}

}  // namespace quillcast::platform
