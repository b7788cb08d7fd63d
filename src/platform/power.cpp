#include "platform/power.h"

#include <spawn.h>
#include <sys/wait.h>

#include <string>

extern char** environ;

namespace quillcast::platform {

Result<void> SystemPower::PowerOff() {
  const Error refused{Failure::kNotPermitted, "The system did not let itself be switched off.",
                      "Switch it off by hand; the run is finished and reported."};
  std::string program = "systemctl";
  std::string verb = "poweroff";
  std::string blockers = "--ignore-inhibitors";
  char* const arguments[] = {program.data(), verb.data(), blockers.data(), nullptr};
  pid_t child = 0;
  if (::posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0) return refused;
  int status = 0;
  ::waitpid(child, &status, 0);
  if (status != 0) return refused;
  return {};
}

}  // namespace quillcast::platform
