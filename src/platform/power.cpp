#include "platform/power.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <array>
#include <cerrno>
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

Error Cancelled(bool was_asked) {
  return {Failure::kTryAgain,
          was_asked ? "Cancelled; the system had been asked to switch off already, and may still do it."
                    : "Cancelled; the system was not asked to switch off.",
          ""};
}

bool IsCancelled(const CancelToken& cancel) { return cancel.Requested() != Stop::kNone; }

// Waits for the bus to have something, at most until `end`, and not long without a look at what was cancelled.
// False where it is over.
bool WaitFor(sd_bus* bus, std::chrono::steady_clock::time_point end) {
  constexpr std::chrono::microseconds kLook(100'000);
  const auto left = std::chrono::duration_cast<std::chrono::microseconds>(end - std::chrono::steady_clock::now());
  if (left.count() <= 0) return false;
  const int waited = sd_bus_wait(bus, static_cast<std::uint64_t>(std::min(left, kLook).count()));
  return waited >= 0 || waited == -EINTR;
}

// Until the bus has let us in, which a peer that only listens would never do. Null where it did not in time.
Bus OpenBus(const PowerPlaces& places, const CancelToken& cancel) {
  sd_bus* made = nullptr;
  if (sd_bus_new(&made) < 0) return nullptr;
  Bus bus(made);
  if (sd_bus_set_address(made, places.bus.c_str()) < 0 || sd_bus_set_bus_client(made, 1) < 0 || sd_bus_start(made) < 0)
    return nullptr;
  const auto end = std::chrono::steady_clock::now() + places.patience;
  for (int ready = sd_bus_is_ready(made); ready <= 0; ready = sd_bus_is_ready(made)) {
    if (ready < 0 || IsCancelled(cancel)) return nullptr;
    const int done = sd_bus_process(made, nullptr);
    if (done < 0 || (done == 0 && !WaitFor(made, end))) return nullptr;
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

struct Answer {
  bool came = false;
  std::optional<Result<void>> said;  // nothing where nobody heard the question
};

int TakeAnswer(sd_bus_message* reply, void* answer, sd_bus_error* /*unused*/) {
  auto& taken = *static_cast<Answer*>(answer);
  taken.came = true;
  const sd_bus_error* error = sd_bus_message_get_error(reply);
  if (error == nullptr) {
    taken.said = Result<void>();
  } else if (!NobodyHeard(*error)) {
    taken.said = Refused(Printable(error->message == nullptr ? error->name : error->message, 200));
  }
  return 1;
}

// What the login manager answered; nothing where it could not be asked.
std::optional<Result<void>> AskLoginManager(const PowerPlaces& places, const CancelToken& cancel) {
  Answer answer;
  const Bus bus = OpenBus(places, cancel);
  if (!bus) return std::nullopt;
  constexpr int kAskNobody = 0;
  const int sent =
      sd_bus_call_method_async(bus.get(), nullptr, "org.freedesktop.login1", "/org/freedesktop/login1",
                               "org.freedesktop.login1.Manager", "PowerOff", TakeAnswer, &answer, "b", kAskNobody);
  if (sent < 0) return Refused(std::strerror(-sent));
  const auto end = std::chrono::steady_clock::now() + places.patience;
  while (!answer.came) {
    if (IsCancelled(cancel)) return Cancelled(true);
    const int done = sd_bus_process(bus.get(), nullptr);
    if (done < 0) return Refused(std::strerror(-done));
    if (done == 0 && !WaitFor(bus.get(), end)) return Refused(std::strerror(ETIMEDOUT));
  }
  return answer.said;
}

Result<void> AskServiceManager(const PowerPlaces& places, const CancelToken& cancel) {
  const std::array<std::string, 4> words = {places.service_manager, "poweroff", "--ignore-inhibitors",
                                            "--no-ask-password"};
  const ProgramRun run = RunProgram(words, {.patience = places.patience, .cancel = &cancel});
  if (run.end == ProgramEnd::kNotStarted) return Refused("neither a login manager nor a service manager can be asked.");
  if (run.end == ProgramEnd::kCancelled) return Cancelled(true);
  if (run.end != ProgramEnd::kExited) return Refused("the service manager gave no answer.");
  return run.status == 0 ? Result<void>() : Refused({});
}

}  // namespace

PowerPlaces PowerPlacesOf(const Environment& environment) {
  return {.bus = environment.Get("DBUS_SYSTEM_BUS_ADDRESS").value_or("unix:path=/run/dbus/system_bus_socket"),
          .service_manager = "systemctl"};
}

Result<void> clsExitWindows::ExitWindows(const CancelToken& cancel) {
  const auto answer = AskLoginManager(places_, cancel);
  if (answer) return *answer;
  return IsCancelled(cancel) ? Cancelled(false) : AskServiceManager(places_, cancel);
}

}  // namespace quillcast::platform
