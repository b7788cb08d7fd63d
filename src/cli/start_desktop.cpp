#include "cli/start_desktop.h"

#include <unistd.h>

#include <string>

#include "platform/file.h"

namespace quillcast::cli {

Result<std::string> FindDesktop(const std::filesystem::path& executable) {
  std::string program = (executable.parent_path() / "quillcast-desktop").string();
  if (std::filesystem::exists(program, IgnoreErrors())) return program;
  return Error{Failure::kNoInput, "The window is not installed here: this is the command alone.",
               "Build or install quillcast-desktop beside it to have the window"};
}

Error StartDesktop(const std::filesystem::path& executable, const std::optional<std::filesystem::path>& profile,
                   const platform::Environment& environment) {
  auto program = FindDesktop(executable);
  if (!program) return program.error();
  if (!environment.Get("DISPLAY") && !environment.Get("WAYLAND_DISPLAY")) {
    return {Failure::kUnavailable, "There is no display to open the window on.",
            "Start it on a desktop, or name one in DISPLAY"};
  }
  std::string option = "--profile";
  std::string folder = profile.value_or("").string();
  char* const arguments[] = {program->data(), profile ? option.data() : nullptr, folder.data(), nullptr};
  ::execv(program->c_str(), arguments);
  return platform::SystemError("start", *program, errno);
}

}  // namespace quillcast::cli
