#include "platform/program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

extern char** environ;

namespace quillcast::platform {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::size_t kLongestComplaint = 4096;
constexpr int kUntilNextLook = 100;  // milliseconds; where the kernel gives no handle of a process

struct Pipe {
  UniqueFd read;
  UniqueFd write;
};

std::optional<Pipe> MakePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  return Pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
}

// What comes out of a pipe, as much as there is room for. It never grows: nothing of it is left where it was before.
class Drain {
 public:
  Drain(UniqueFd end, std::size_t room) : end_(std::move(end)), text_(room, '\0') {
    IgnoreErrors(::fcntl(end_.get(), F_SETFL, O_NONBLOCK));
  }

  int fd() const { return end_.get(); }
  bool is_full() const { return used_ == text_.size(); }
  // Takes what is there. What there is no room for is read and dropped.
  void Take() {
    std::array<char, 4096> beyond{};
    while (end_) {
      char* const to = is_full() ? beyond.data() : text_.data() + used_;
      const ssize_t got = ::read(end_.get(), to, is_full() ? beyond.size() : text_.size() - used_);
      if (got < 0 && errno == EINTR) continue;
      if (got == 0) end_.Close();
      if (got <= 0) return;
      if (is_full()) return;  // once a call, so that what never ends is looked at in between
      used_ += static_cast<std::size_t>(got);
    }
  }
  std::string Text() && {
    text_.resize(used_);
    return std::move(text_);
  }
  ~Drain() { Wipe(text_); }
  Drain(const Drain&) = delete;
  Drain& operator=(const Drain&) = delete;

 private:
  UniqueFd end_;
  std::string text_;
  std::size_t used_ = 0;
};

// In a session of its own, with the signals as they are by default. A stream of -1 is /dev/null. 0, or the system's
// error number.
int Spawn(std::span<const std::string> arguments, const std::array<int, 3>& streams, pid_t& child) {
  std::vector<std::string> words(arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t files;
  IgnoreErrors(::posix_spawn_file_actions_init(&files));
  for (int stream = 0; stream < 3; ++stream) {
    const int from = streams[static_cast<std::size_t>(stream)];
    IgnoreErrors(from < 0 ? ::posix_spawn_file_actions_addopen(&files, stream, "/dev/null", O_RDWR, 0)
                          : ::posix_spawn_file_actions_adddup2(&files, from, stream));
  }
  posix_spawnattr_t traits;
  IgnoreErrors(::posix_spawnattr_init(&traits));
  sigset_t signals;
  IgnoreErrors(::sigemptyset(&signals));
  IgnoreErrors(::posix_spawnattr_setsigmask(&traits, &signals));
  for (const int number : {SIGPIPE, SIGXFSZ, SIGINT, SIGTERM, SIGCHLD}) IgnoreErrors(::sigaddset(&signals, number));
  IgnoreErrors(::posix_spawnattr_setsigdefault(&traits, &signals));
  IgnoreErrors(
      ::posix_spawnattr_setflags(&traits, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
  const int failed = ::posix_spawnp(&child, pointers[0], &files, &traits, pointers.data(), environ);
  IgnoreErrors(::posix_spawnattr_destroy(&traits));
  IgnoreErrors(::posix_spawn_file_actions_destroy(&files));
  return failed;
}

int WaitForEnd(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  return status;
}

// Kills a child with all that it started where this program ends before it, however that ends: another process waits at
// a socket, whose other end the system closes then. A signal for the parent's death would reach the child alone, and
// comes already when the thread ends that started it.
class Guard {
 public:
  explicit Guard(pid_t child) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return;
    ours_ = UniqueFd(ends[0]);
    const UniqueFd theirs(ends[1]);
    const std::array<std::string, 5> words = {"/bin/sh", "-c", "read -r over || kill -s KILL -- \"-$1\"", "sh",
                                              std::to_string(child)};
    if (Spawn(words, {theirs.get(), -1, -1}, guard_) != 0) guard_ = 0;
  }
  ~Guard() {
    if (guard_ == 0) return;
    IgnoreErrors(::send(ours_.get(), "\n", 1, MSG_NOSIGNAL));
    ours_.Close();
    WaitForEnd(guard_);
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

 private:
  UniqueFd ours_;
  pid_t guard_ = 0;
};

// The child's end as waitpid(2) has it, or why it was not waited for any longer.
class Waiting {
 public:
  Waiting(pid_t child, const ProgramLimits& limits, Drain& output, Drain& complaint)
      : child_(child),
        limits_(limits),
        output_(output),
        complaint_(complaint),
        until_(SteadyClock::now() + limits.patience) {}

  ProgramEnd Wait() {
    const UniqueFd handle(static_cast<int>(::syscall(SYS_pidfd_open, child_, 0)));
    while (true) {
      const bool has_ended = HasEnded();  // asked first: all that it printed is then in the pipes
      output_.Take();
      complaint_.Take();
      if (output_.is_full()) return ProgramEnd::kPrintedTooMuch;
      if (has_ended) return ProgramEnd::kExited;
      if (limits_.cancel != nullptr && limits_.cancel->Requested() != Stop::kNone) return ProgramEnd::kCancelled;
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(until_ - SteadyClock::now()).count();
      if (left <= 0) return ProgramEnd::kTimedOut;
      const int cancel = limits_.cancel == nullptr ? -1 : limits_.cancel->PollFd();
      std::array<pollfd, 4> waits = {
          {{output_.fd(), POLLIN, 0}, {complaint_.fd(), POLLIN, 0}, {handle.get(), POLLIN, 0}, {cancel, POLLIN, 0}}};
      const auto most = handle && cancel >= 0 ? left : std::min<decltype(left)>(left, kUntilNextLook);
      IgnoreErrors(::poll(waits.data(), waits.size(), static_cast<int>(most)));
    }
  }
  // Its end, where it had not come; with those that it started.
  void Kill() {
    if (ended_) return;
    IgnoreErrors(::kill(-child_, SIGKILL));
    status_ = WaitForEnd(child_);
  }
  int status() const { return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1; }

 private:
  bool HasEnded() {
    if (ended_) return true;
    const pid_t ended = ::waitpid(child_, &status_, WNOHANG);
    // Where the ends of children are ignored nobody knows how it ended, but that it did.
    ended_ = ended == child_ || (ended < 0 && errno == ECHILD);
    return ended_;
  }

  const pid_t child_;
  const ProgramLimits& limits_;
  Drain& output_;
  Drain& complaint_;
  const SteadyClock::time_point until_;
  int status_ = 0;
  bool ended_ = false;
};

}  // namespace

ProgramRun RunProgram(std::span<const std::string> arguments, const ProgramLimits& limits) {
  auto out = MakePipe();
  auto err = MakePipe();
  ProgramRun run;
  if (!out || !err) {
    run.status = errno;
    return run;
  }
  pid_t child = 0;
  run.status = Spawn(arguments, {-1, out->write.get(), err->write.get()}, child);
  if (run.status != 0) return run;
  const Guard guard(child);
  out->write.Close();
  err->write.Close();
  Drain output(std::move(out->read), limits.output + 1);
  Drain complaint(std::move(err->read), kLongestComplaint);
  Waiting waiting(child, limits, output, complaint);
  run.end = waiting.Wait();
  waiting.Kill();
  run.status = waiting.status();
  run.complaint = std::move(complaint).Text();
  run.output = Secret(std::move(output).Text());
  return run;
}

}  // namespace quillcast::platform
