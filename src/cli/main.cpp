// The program `quillcast`: signals, limits, and the command line.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/standard_streams.h"
#include "platform/result.h"

namespace {

quillcast::platform::CancelToken* interrupted = nullptr;  // for the signal handler alone

// The first Ctrl-C stops after what is under way; the second gives that up too.
void OnInterrupt(int) {
  const bool first = interrupted->Requested() == quillcast::platform::Stop::kNone;
  const char* text = first ? "\nStopping after what is under way; Ctrl-C again gives that up too.\n" : "\nGiving up.\n";
  quillcast::IgnoreErrors(::write(STDERR_FILENO, text, std::strlen(text)));
  interrupted->Request();
}

// A standard stream that the caller closed must not become the number of a store, a report or a connection, which then
// takes what is printed. Opened the other way round, so that using it still fails.
void HoldStandardStreams() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(fd, F_GETFD) == -1) ::open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

void HandleSignals() {
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  ::sigaction(SIGINT, &action, nullptr);
  ::sigaction(SIGTERM, &action, nullptr);
  ::signal(SIGCHLD, SIG_DFL);  // whoever started this may ignore them, and then no program's end could be waited for
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
  HoldStandardStreams();
  static quillcast::platform::CancelToken cancel;  // what is printed at the very end still asks it
  interrupted = &cancel;
  quillcast::cli::WriteThroughInterrupts(cancel);
  HandleSignals();
  return quillcast::cli::RunCommandLine(std::vector<std::string>(argv + 1, argv + argc), Executable(argv[0]), cancel);
}
