#include "platform/session_log.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::platform {
namespace {

constexpr std::size_t kLongestLine = 2000;
constexpr std::string_view kEndsAnAddress = " \t\r\n<>(),;:'\"[]";

// Where the address round the "@" begins; a quoted local part may hold anything.
std::size_t BeginOf(std::string_view text, std::size_t at) {
  if (at > 0 && text[at - 1] == '"') {
    const auto quote = at < 2 ? std::string_view::npos : text.rfind('"', at - 2);
    return quote == std::string_view::npos ? at - 1 : quote;
  }
  const auto before = text.substr(0, at).find_last_of(kEndsAnAddress);
  return before == std::string_view::npos ? 0 : before + 1;
}

// Opened anew for each line, so that no line goes into a file that another process has put away; failures are few.
// Nothing for what is not a private file of this user's own: somebody else put it there.
UniqueFd OpenLog(const std::filesystem::path& file) {
  UniqueFd fd(::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
  struct stat status {};
  if (!fd || ::fstat(fd.get(), &status) != 0) return {};
  const bool is_ours = S_ISREG(status.st_mode) && status.st_nlink == 1 && status.st_uid == ::geteuid() &&
                       (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
  return is_ours ? std::move(fd) : UniqueFd();
}

bool HasRoom(const UniqueFd& log, std::size_t line) {
  struct stat status {};
  return ::fstat(log.get(), &status) == 0 && static_cast<std::uint64_t>(status.st_size) + line <= SessionLog::kLargest;
}

// Of several processes that find it full one moves it, the one that has its lock while it still bears the name; the
// others would move the new one over it.
void PutAway(const std::filesystem::path& folder, const UniqueFd& full) {
  const auto log = SessionLog::FileIn(folder);
  struct stat held {};
  struct stat named {};
  if (full && ::flock(full.get(), LOCK_EX | LOCK_NB) != 0) return;
  if (full && (::fstat(full.get(), &held) != 0 || ::lstat(log.c_str(), &named) != 0 || held.st_ino != named.st_ino)) {
    return;
  }
  std::filesystem::rename(log, folder / "Session.before.log", IgnoreErrors());
}

}  // namespace

std::string WithoutAddresses(std::string_view text) {
  std::string out;
  for (auto at = text.find('@'); at != std::string_view::npos; at = text.find('@')) {
    out.append(text.substr(0, BeginOf(text, at))).append("(an address)");
    const auto end = text.find_first_of(kEndsAnAddress, at);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end);
  }
  return out.append(text);
}

SessionLog::SessionLog(std::filesystem::path folder, const Clock& clock) : folder_(std::move(folder)), clock_(clock) {
  OnPassedOver([this](const Error& error) { Write(InOneLine(error)); });
}

SessionLog::~SessionLog() { OnPassedOver({}); }

void SessionLog::Write(std::string_view text) {
  const std::lock_guard guard(lock_);
  const std::string shown = Printable(WithoutAddresses(text), kLongestLine);
  if (shown == last_) return;
  last_ = shown;
  const std::string line = fmt::format("{:%Y-%m-%d %H:%M:%S} {}\n", clock_.Local(clock_.Now()), shown);
  auto log = OpenLog(FileIn(folder_));
  if (!log || !HasRoom(log, line.size())) {
    PutAway(folder_, log);
    log = OpenLog(FileIn(folder_));
  }
  if (!log) return;
  // Whether it went, not the Result: that would be told to this log.
  IgnoreErrors(static_cast<bool>(WriteAll(log.get(), folder_, line)));
}

}  // namespace quillcast::platform
