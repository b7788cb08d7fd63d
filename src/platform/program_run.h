// Runs another program and has what it prints.
#pragma once

#include <chrono>
#include <cstddef>
#include <span>
#include <string>

#include "platform/cancel.h"
#include "platform/secret.h"

namespace quillcast::platform {

enum class ProgramEnd { kExited, kNotStarted, kTimedOut, kPrintedTooMuch, kCancelled };

struct ProgramRun {
  ProgramEnd end = ProgramEnd::kNotStarted;
  int status = 0;         // of kExited: 0 to 255, or -1 after a signal; of kNotStarted: the system's error number
  Secret output;          // its standard output, as far as it was read
  std::string complaint;  // the first 4 KiB of its standard error
};

struct ProgramLimits {
  std::chrono::milliseconds patience;         // until it has ended
  std::size_t output = std::size_t{1} << 16;  // octets of standard output; a program that prints more is ended
  const CancelToken* cancel = nullptr;        // whose first request ends it
};

// The first argument names the program, which is looked for in PATH where it has no slash. It reads nothing and has no
// terminal, so that it cannot wait for somebody there; what it started itself is ended with it, but not where it ended
// by itself. Where this program ends first, even by SIGKILL, they are ended too. All that it prints is wiped from
// memory where it is not given.
ProgramRun RunProgram(std::span<const std::string> arguments, const ProgramLimits& limits);

}  // namespace quillcast::platform
