#include "cli/standard_streams.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>

namespace quillcast::cli {
namespace {

struct Target {
  int fd;
  const platform::CancelToken* cancel = nullptr;
};

bool IsGivenUp(const Target& target) { return target.cancel->Requested() == platform::Stop::kAbandon; }

// Whether a pipe takes PIPE_BUF bytes at once, and so all that is written at a time.
bool TakesAny(const Target& target) {
  pollfd ready{.fd = target.fd, .events = POLLOUT, .revents = 0};
  return ::poll(&ready, 1, 0) != 0;
}

// Of the shape that the library asks for. Less than `size` tells it of a failure.
ssize_t Write(void* cookie, const char* text, std::size_t size) {
  const Target& target = *static_cast<const Target*>(cookie);
  std::size_t done = 0;
  while (done < size) {
    const bool may_wait = !IsGivenUp(target) || TakesAny(target);
    const ssize_t count = may_wait ? ::write(target.fd, text + done, size - done) : (errno = EINTR, -1);
    if (count >= 0) {
      done += static_cast<std::size_t>(count);
    } else if (errno != EINTR || IsGivenUp(target)) {
      break;
    }
  }
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
