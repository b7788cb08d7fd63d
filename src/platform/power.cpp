#include "platform/power.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <memory>
#include <optional>

#include "platform/file.h"
#include "platform/text.h"

extern char** environ;

namespace quillcast::platform {
namespace {

using Milliseconds = std::chrono::milliseconds;

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

// Waits for the end of a child as long as `patience`, then ends it. Its status, or nothing where it took too long.
std::optional<int> EndOf(pid_t child, Milliseconds patience) {
  const UniqueFd handle(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
  pollfd waiting{handle.get(), POLLIN, 0};
  // Where the kernel has no such handle, -1 is passed over and the whole time is waited.
  const bool in_time = ::poll(&waiting, 1, static_cast<int>(patience.count())) > 0;
  int status = 0;
  if (!in_time && ::waitpid(child, &status, WNOHANG) == 0) {
    IgnoreErrors(::kill(child, SIGKILL));
    IgnoreErrors(::waitpid(child, &status, 0));
    return std::nullopt;
  }
  if (in_time) IgnoreErrors(::waitpid(child, &status, 0));
  return status;
}

Result<void> AskServiceManager(const PowerPlaces& places) {
  std::string program = places.service_manager;
  std::array<std::string, 3> words = {"poweroff", "--ignore-inhibitors", "--no-ask-password"};
  const std::array<char*, 5> arguments = {program.data(), words[0].data(), words[1].data(), words[2].data(), nullptr};
  posix_spawn_file_actions_t no_input;
  IgnoreErrors(::posix_spawn_file_actions_init(&no_input));
  IgnoreErrors(::posix_spawn_file_actions_addopen(&no_input, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
  pid_t child = 0;
  const int failed = ::posix_spawnp(&child, program.c_str(), &no_input, nullptr, arguments.data(), environ);
  IgnoreErrors(::posix_spawn_file_actions_destroy(&no_input));
  if (failed != 0) return Refused("neither a login manager nor a service manager can be asked.");
  const auto status = EndOf(child, places.patience);
  if (!status) return Refused("the service manager gave no answer.");
  return *status == 0 ? Result<void>() : Refused({});
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
