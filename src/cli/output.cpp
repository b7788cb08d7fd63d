#include "cli/output.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

#include "platform/text.h"

namespace quillcast::cli {
namespace {

constexpr auto kProgressPause = std::chrono::milliseconds(100);

// Texts of the system join their lines with CR LF; a terminal wants LF.
std::string ForTerminal(std::string_view text) { return platform::ReplaceAll(text, "\r\n", "\n"); }

}  // namespace

void Output::Line(std::string_view text) const {
  if (!json) fmt::print("{}\n", ForTerminal(text));
}

void Output::Object(const nlohmann::ordered_json& object) const {
  if (json) fmt::print("{}\n", object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void Output::Note(std::string_view text) const {
  if (!quiet) fmt::print(stderr, "{}\n", ForTerminal(text));
}

int Output::Fail(const Error& error) const {
  fmt::print(stderr, "quillcast: {}\n", Describe(error));
  return ExitCode(error.failure);
}

int Output::Complain(std::string_view text) const {
  fmt::print(stderr, "quillcast: {}\n", ForTerminal(text));
  return ExitCode(Failure::kUsage);
}

void Output::Progress(std::string_view text) {
  if (quiet || json || ::isatty(STDERR_FILENO) == 0) return;
  const auto now = std::chrono::steady_clock::now();
  if (progress_shown_ && now - last_progress_ < kProgressPause) return;
  last_progress_ = now;
  progress_shown_ = true;
  fmt::print(stderr, "\r{}\x1b[K", text);
  std::fflush(stderr);
}

void Output::EndProgress() {
  if (progress_shown_) fmt::print(stderr, "\r\x1b[K");
  progress_shown_ = false;
}

}  // namespace quillcast::cli
