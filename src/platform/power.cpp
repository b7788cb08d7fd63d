#include "platform/power.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "platform/file.h"
#include "platform/program_run.h"
#include "platform/system_bus.h"
#include "platform/text.h"

namespace quillcast::platform {
namespace {

constexpr const char* kLoginManager = "org.freedesktop.login1";

Error Refused(std::string who_and_why) {
  constexpr const char* kByHand = "Switch it off by hand; the run is finished and reported.";
  if (who_and_why.empty()) return {Failure::kNotPermitted, "The system did not let itself be switched off.", kByHand};
  if (!who_and_why.ends_with('.')) who_and_why += '.';  // what the system says has none
  return {Failure::kNotPermitted, Say("The system did not let itself be switched off: {}", who_and_why), kByHand};
}

Error Cancelled(bool was_asked) {
  return {Failure::kTryAgain,
          was_asked ? "Cancelled; the system had been asked to switch off already, and may still do it."
                    : "Cancelled; the system was not asked to switch off.",
          ""};
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
  const SystemBus bus = OpenSystemBus(places.bus, std::chrono::steady_clock::now() + places.patience, cancel);
  if (!bus) return std::nullopt;
  constexpr int kAskNobody = 0;
  const int sent =
      sd_bus_call_method_async(bus.get(), nullptr, kLoginManager, "/org/freedesktop/login1",
                               "org.freedesktop.login1.Manager", "PowerOff", TakeAnswer, &answer, "b", kAskNobody);
  if (sent < 0) return Refused(std::strerror(-sent));
  const auto end = std::chrono::steady_clock::now() + places.patience;
  while (!answer.came) {
    if (cancel.Requested() != Stop::kNone) return Cancelled(true);
    const int done = sd_bus_process(bus.get(), nullptr);
    if (done < 0) return Refused(std::strerror(-done));
    if (done == 0 && !WaitForBus(bus.get(), end)) return Refused(std::strerror(ETIMEDOUT));
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

// The login manager's file, with the bus that it came by.
class HeldByLoginManager final : public Awake {
 public:
  explicit HeldByLoginManager(UniqueFd file) : file_(std::move(file)) {}

 private:
  UniqueFd file_;
};

int TakeFile(sd_bus_message* reply, void* taken, sd_bus_error* /*unused*/) {
  auto& [came, file] = *static_cast<std::pair<bool, UniqueFd>*>(taken);
  came = true;
  int fd = -1;
  if (sd_bus_message_get_error(reply) == nullptr && sd_bus_message_read(reply, "h", &fd) >= 0) {
    file = UniqueFd(::fcntl(fd, F_DUPFD_CLOEXEC, 3));  // the reply keeps its own
  }
  return 1;
}

}  // namespace

PowerPlaces PowerPlacesOf(const Environment& environment) {
  return {.bus = environment.Get("DBUS_SYSTEM_BUS_ADDRESS").value_or("unix:path=/run/dbus/system_bus_socket"),
          .service_manager = "systemctl"};
}

Result<void> clsExitWindows::ExitWindows(const CancelToken& cancel) {
  const auto answer = AskLoginManager(places_, cancel);
  if (answer) return *answer;
  return cancel.Requested() != Stop::kNone ? Cancelled(false) : AskServiceManager(places_, cancel);
}

std::unique_ptr<Awake> clsExitWindows::StayAwake(const char* why) {
  constexpr std::chrono::seconds kPatience{1};  // with a bus or a login manager that says nothing
  const auto end = std::chrono::steady_clock::now() + kPatience;
  const CancelToken never;
  const SystemBus bus = OpenSystemBus(places_.bus, end, never);
  if (!bus) return nullptr;
  std::pair<bool, UniqueFd> taken;
  const int sent = sd_bus_call_method_async(bus.get(), nullptr, kLoginManager, "/org/freedesktop/login1",
                                            "org.freedesktop.login1.Manager", "Inhibit", TakeFile, &taken, "ssss",
                                            "sleep:idle", "Quillcast Classic", why, "block");
  for (bool goes_on = sent >= 0; goes_on && !taken.first;) {
    const int done = sd_bus_process(bus.get(), nullptr);
    goes_on = done > 0 || (done == 0 && WaitForBus(bus.get(), end));
  }
  if (!taken.second) return nullptr;
  return std::make_unique<HeldByLoginManager>(std::move(taken.second));
}

}  // namespace quillcast::platform
