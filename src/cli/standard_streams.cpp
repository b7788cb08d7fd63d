#include "cli/standard_streams.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>

namespace quillcast::cli {
namespace {

// What a reader has, once it is given up, to take the rest of a record that is longer than PIPE_BUF.
constexpr std::chrono::milliseconds kPatience(500);
constexpr std::chrono::milliseconds kBetweenLooks(100);

struct Target {
  int fd;
  const platform::CancelToken* cancel = nullptr;
  bool is_cut = false;  // something of it was lost
};

bool IsGivenUp(const Target& target) { return target.cancel->Requested() == platform::Stop::kAbandon; }

// Whether the reader takes something within a time. A pipe then takes PIPE_BUF bytes at once, and so all that is
// written at a time.
bool TakesAny(const Target& target, std::chrono::milliseconds time) {
  pollfd ready{.fd = target.fd, .events = POLLOUT, .revents = 0};
  return ::poll(&ready, 1, static_cast<int>(time.count())) > 0;
}

// After a write that came to nothing. Some programs hand on an output that does not wait by itself (EAGAIN).
bool MayGoOn(int failure, const Target& target) {
  if (failure == EINTR) return true;
  if (failure != EAGAIN) return false;
  while (!IsGivenUp(target) && !TakesAny(target, kBetweenLooks)) {
  }
  return true;
}

// Of the shape that the library asks for. Less than `size` tells it of a failure.
ssize_t Write(void* cookie, const char* text, std::size_t size) {
  Target& target = *static_cast<Target*>(cookie);
  std::size_t done = 0;
  while (done < size && !target.is_cut) {
    if (IsGivenUp(target) && !TakesAny(target, kPatience)) break;
    const ssize_t count = ::write(target.fd, text + done, size - done);
    if (count >= 0) {
      done += static_cast<std::size_t>(count);
    } else if (!MayGoOn(errno, target)) {
      break;
    }
  }
  // What is printed later would stand behind a hole in a record; the last message does not mind that.
  target.is_cut |= target.fd == STDOUT_FILENO && done < size;
  return static_cast<ssize_t>(done);
}

std::FILE* Open(Target& target, std::FILE* instead_of) {
  cookie_io_functions_t functions{};
  functions.write = Write;
  std::FILE* stream = ::fopencookie(&target, "w", functions);
  return stream == nullptr ? instead_of : stream;
}

}  // namespace

void WriteThroughInterrupts(const platform::CancelToken& cancel) {
  static Target out{STDOUT_FILENO};
  static Target error{STDERR_FILENO};
  static std::array<char, PIPE_BUF> buffer;  // a pipe takes so much whole or not at all
  out.cancel = error.cancel = &cancel;
  stdout = Open(out, stdout);
  stderr = Open(error, stderr);
  std::setvbuf(stdout, buffer.data(), ::isatty(STDOUT_FILENO) != 0 ? _IOLBF : _IOFBF, buffer.size());
  std::setvbuf(stderr, nullptr, _IONBF, 0);
}

bool HasStandardOutputArrived() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

}  // namespace quillcast::cli
