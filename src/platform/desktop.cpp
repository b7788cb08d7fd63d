#include "platform/desktop.h"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>

extern char** environ;

namespace quillcast::platform {
namespace {

using namespace std::chrono_literals;

constexpr auto kPause = 10ms;
constexpr auto kPatience = 1s;

}  // namespace

Result<void> XdgDesktop::OpenFile(const std::filesystem::path& file) { return Open(file.string()); }

Result<void> XdgDesktop::OpenPage(std::string_view address) { return Open(std::string(address)); }

Result<void> XdgDesktop::Open(std::string what) const {
  const Sentence remedy = Say("Open it yourself: {}", what);
  if (!has_display_) return Error{Failure::kUnavailable, "There is no display to open it on.", remedy};
  std::string program = "xdg-open";
  char* const arguments[] = {program.data(), what.data(), nullptr};
  pid_t child = 0;
  if (::posix_spawnp(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0) {
    return Error{Failure::kUnavailable, "xdg-open, which opens files and pages with their programs, is not installed.",
                 remedy};
  }
  // xdg-open returns once it has handed the file over; where there is no desktop to hand it to, it is itself the
  // program that shows the file, and goes on for as long as that is open.
  int status = 0;
  for (auto waited = 0ms; ::waitpid(child, &status, WNOHANG) == 0; waited += kPause) {
    if (waited >= kPatience) {
      std::thread([child] { ::waitpid(child, nullptr, 0); }).detach();
      return {};
    }
    std::this_thread::sleep_for(kPause);
  }
  if (status != 0) return Error{Failure::kUnavailable, "No program could be found for it.", remedy};
  return {};
}

}  // namespace quillcast::platform
