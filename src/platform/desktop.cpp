#include "platform/desktop.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace quillcast::platform {

Result<void> XdgDesktop::OpenFile(const std::filesystem::path& file) {
  const std::string remedy = fmt::format("Open it yourself: {}", file.string());
  if (!has_display_) return Error{Failure::kUnavailable, "There is no display to open the file on.", remedy};
  std::string program = "xdg-open";
  std::string argument = file.string();
  char* const arguments[] = {program.data(), argument.data(), nullptr};
  pid_t child = 0;
  if (::posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0) {
    return Error{Failure::kUnavailable, "xdg-open, which opens files with their programs, is not installed.", remedy};
  }
  int status = 0;
  ::waitpid(child, &status, 0);  // xdg-open returns once it has handed the file over
  if (status != 0) return Error{Failure::kUnavailable, "No program could be found for the file.", remedy};
  return {};
}

}  // namespace quillcast::platform
