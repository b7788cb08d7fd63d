// The program `quillcast`: signals, limits, and the command line.
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/command_line.h"

namespace {

quillcast::platform::CancelToken* interrupted = nullptr;  // for the signal handler alone

// The first Ctrl-C stops after what is under way; the second gives that up too.
void OnInterrupt(int) {
  const bool first = interrupted->Requested() == quillcast::platform::Stop::kNone;
  const char* text = first ? "\nStopping after what is under way; Ctrl-C again gives that up too.\n" : "\nGiving up.\n";
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text, std::strlen(text));
  interrupted->Request();
}

void HandleSignals() {
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
  ::signal(SIGPIPE, SIG_IGN);  // a peer or a pipe that is gone is told by the failing write
  ::signal(SIGXFSZ, SIG_IGN);  // so is a limit on the size of files
}

std::filesystem::path Executable(const char* name) {
  std::error_code failed;
  auto path = std::filesystem::read_symlink("/proc/self/exe", failed);
  return failed ? std::filesystem::path(name) : path;
}

}  // namespace

int main(int argc, char** argv) {
  quillcast::platform::CancelToken cancel;
  interrupted = &cancel;
  HandleSignals();
  return quillcast::cli::RunCommandLine(std::vector<std::string>(argv + 1, argv + argc), Executable(argv[0]), cancel);
}
