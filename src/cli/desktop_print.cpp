#include "cli/desktop_print.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <utility>

#include "platform/file.h"

extern char** environ;

namespace quillcast::cli {
namespace {

using mail_file::PrintCode;
using mail_file::PrintedMessage;

constexpr std::size_t kPiece = 4096;

struct Started {
  pid_t process;
  platform::UniqueFd told;
};

Result<Started> Start(std::string& program, const mail_file::PrintJob& job, int message, int pdf) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return platform::SystemError("start", program, errno);
  platform::UniqueFd told(ends[0]);
  const platform::UniqueFd telling(ends[1]);
  std::vector<std::string> texts = mail_file::AsArguments(job);
  std::vector<char*> arguments = {program.data()};
  for (std::string& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t files;
  ::posix_spawn_file_actions_init(&files);
  ::posix_spawn_file_actions_adddup2(&files, message, STDIN_FILENO);
  ::posix_spawn_file_actions_adddup2(&files, telling.get(), STDOUT_FILENO);
  ::posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);  // what libraries say
  if (pdf != -1) ::posix_spawn_file_actions_adddup2(&files, pdf, mail_file::kPrintedFile);
  pid_t child = 0;
  const int failed = ::posix_spawn(&child, program.c_str(), &files, nullptr, arguments.data(), environ);
  ::posix_spawn_file_actions_destroy(&files);
  if (failed != 0) return platform::SystemError("start", program, failed);
  return Started{child, std::move(told)};
}

// Reads to the end of what is told; false after a cancel.
bool Hear(int told, const platform::CancelToken& cancel, const std::function<void(std::string_view line)>& take) {
  std::string text;
  std::array<char, kPiece> piece{};
  while (cancel.Requested() == platform::Stop::kNone) {
    std::array<pollfd, 2> waits = {{{told, POLLIN, 0}, {cancel.PollFd(), POLLIN, 0}}};
    if (::poll(waits.data(), waits.size(), -1) < 0 || waits[0].revents == 0) continue;  // interrupted, or cancelled
    const ssize_t got = ::read(told, piece.data(), piece.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return true;
    text.append(piece.data(), static_cast<std::size_t>(got));
    for (std::size_t end; (end = text.find('\n')) != std::string::npos; text.erase(0, end + 1))
      take(std::string_view(text).substr(0, end));
  }
  return false;
}

}  // namespace

Result<PrintedMessage> PrintByDesktop(std::string program, const mail_file::PrintJob& job,
                                      const std::filesystem::path& message, int pdf,
                                      const platform::CancelToken& cancel, const SeePage& see) {
  const auto file = platform::OpenForReading(message);
  if (!file) return file.error();
  const auto started = Start(program, job, file->get(), pdf);
  if (!started) return started.error();
  mail_file::PrintNews news;
  const bool was_heard = Hear(started->told.get(), cancel, [&](std::string_view line) {
    mail_file::TakeLine(line, news);
    if (line.starts_with("of=")) see(news.page, news.of);
  });
  if (!was_heard) ::kill(started->process, SIGTERM);
  int status = 0;
  while (::waitpid(started->process, &status, 0) < 0 && errno == EINTR) continue;
  if (news.has_ended) return std::move(news.printed);
  if (!was_heard || cancel.Requested() != platform::Stop::kNone) {
    return PrintedMessage{.code = PrintCode::kCancelled, .error = Error{Failure::kTryAgain, "Printing was cancelled."}};
  }
  return Error{Failure::kInternal, "quillcast-desktop, which draws the pages, broke off.",
               "Look whether quillcast-desktop --version works, and try it once more."};
}

}  // namespace quillcast::cli
