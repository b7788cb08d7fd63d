#include "smtp/mailbox/mailbox_store.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "platform/text.h"

namespace quillcast::smtp {
namespace {

namespace fs = std::filesystem;
using nlohmann::ordered_json;

constexpr std::size_t kLargestPending = 64UL * 1024;
constexpr const char* kIndexName = "index.jsonl";
constexpr std::string_view kLineBegins = "{\"file\":\"";
constexpr std::string_view kIncomingPrefix = ".incoming-";

ordered_json DsnOf(const ReceivedEnvelope& envelope) {
  ordered_json dsn = ordered_json::object();
  if (!envelope.dsn_return.empty()) dsn["ret"] = envelope.dsn_return;
  if (!envelope.envelope_id.empty()) dsn["envid"] = envelope.envelope_id;
  ordered_json recipients = ordered_json::array();
  for (const auto& recipient : envelope.recipients) {
    if (recipient.notify.empty() && recipient.original.empty()) continue;
    ordered_json row{{"to", recipient.address}};
    if (!recipient.notify.empty()) row["notify"] = recipient.notify;
    if (!recipient.original.empty()) row["orcpt"] = recipient.original;
    recipients.push_back(std::move(row));
  }
  if (!recipients.empty()) dsn["recipients"] = std::move(recipients);
  return dsn;
}

// What the client said may be any bytes; those that are not UTF-8 are replaced.
std::string IndexLine(const std::string& file, std::uint64_t size, const ReceivedEnvelope& envelope,
                      std::chrono::system_clock::time_point now) {
  ordered_json to = ordered_json::array();
  for (const auto& recipient : envelope.recipients) to.push_back(recipient.address);
  const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
  ordered_json line{{"file", file},
                    {"from", envelope.sender},
                    {"to", std::move(to)},
                    {"size", size},
                    {"time", fmt::format("{:%Y-%m-%dT%H:%M:%S}Z", fmt::gmtime(seconds))},
                    {"helo", envelope.helo},
                    {"peer", envelope.peer},
                    {"tls", envelope.tls},
                    {"auth", envelope.user},
                    {"body", envelope.body},
                    {"smtputf8", envelope.utf8},
                    {"dsn", DsnOf(envelope)}};
  return platform::PrintableJson(line.dump(-1, ' ', false, ordered_json::error_handler_t::replace)) + "\n";
}

// Whether a line of ours, or the beginning of one, stands there in a regular file; or nothing.
bool BeginsLikeOurs(int fd, off_t at) {
  struct stat status {};
  if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return false;
  std::array<char, kLineBegins.size()> begin{};
  const ssize_t got = ::pread(fd, begin.data(), begin.size(), at);
  return got >= 0 && kLineBegins.starts_with(std::string_view(begin.data(), static_cast<std::size_t>(got)));
}

Error NoIndex(const fs::path& index) {
  return {Failure::kCannotCreate, Say("{} is not a mailbox's list of messages, so it was left alone.", index.string()),
          "Choose another folder with --store, or move that file away."};
}

// The number in "000001.eml"; 0 for any other name.
std::uint64_t NumberOf(const fs::path& name) {
  if (name.extension() != ".eml") return 0;
  const auto number = platform::ParseWholeNumber(name.stem().string());
  return number ? static_cast<std::uint64_t>(*number) : 0;
}

}  // namespace

Result<MailboxStore> MailboxStore::Open(const fs::path& folder, const platform::Clock& clock) {
  if (const auto made = platform::EnsureFolder(folder); !made) return made.error();
  const fs::path index = folder / kIndexName;
  platform::UniqueFd fd(::open(index.c_str(), O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
  if (!fd) return errno == ELOOP || errno == ENXIO ? NoIndex(index) : platform::SystemError("create", index, errno);
  if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
    return Error{Failure::kUnavailable, Say("Another mailbox is keeping its messages in {}.", folder.string()),
                 "Choose another folder with --store, or end the other one."};
  }
  if (!BeginsLikeOurs(fd.get(), 0)) return NoIndex(index);
  MailboxStore store(folder, std::move(fd), clock);
  if (const auto cut = store.CutTornLine(); !cut) return cut.error();
  if (const auto found = store.FindLastNumber(); !found) return found.error();
  return store;
}

// Removes what a mailbox that was killed has left half-written; the lock says that nobody is writing it now.
Result<void> MailboxStore::FindLastNumber() {
  std::error_code error;
  for (auto entry = fs::directory_iterator(folder_, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    const fs::path name = entry->path().filename();
    if (name.string().starts_with(kIncomingPrefix)) IgnoreErrors(::unlink(entry->path().c_str()));
    last_number_ = std::max(last_number_, NumberOf(name));
  }
  if (error) return platform::SystemError("read", folder_, error.value());
  return {};
}

// A last line without its end is of a message for which the client never got its 250.
Result<void> MailboxStore::CutTornLine() {
  const auto size = platform::FileSize(index_.get(), folder_ / kIndexName);
  if (!size) return size.error();
  std::array<char, 4096> block{};
  auto end = static_cast<off_t>(*size);
  while (end > 0) {
    const off_t begin = std::max<off_t>(0, end - static_cast<off_t>(block.size()));
    const ssize_t got = ::pread(index_.get(), block.data(), static_cast<std::size_t>(end - begin), begin);
    if (got != end - begin) return platform::SystemError("read", folder_ / kIndexName, got < 0 ? errno : EIO);
    const auto newline = std::string_view(block.data(), static_cast<std::size_t>(got)).rfind('\n');
    end = begin;
    if (newline == std::string_view::npos) continue;
    end += static_cast<off_t>(newline) + 1;
    break;
  }
  if (end == static_cast<off_t>(*size)) return {};
  if (!BeginsLikeOurs(index_.get(), end)) return NoIndex(folder_ / kIndexName);
  if (::ftruncate(index_.get(), end) == 0) return {};
  return platform::SystemError("write", folder_ / kIndexName, errno);
}

fs::path MailboxStore::NextIncomingPath() { return folder_ / fmt::format("{}{}", kIncomingPrefix, ++incoming_); }

// The name is taken only if it is free: somebody may have put a file of that name there meanwhile.
Result<fs::path> MailboxStore::MoveToNextNumber(const fs::path& incoming) {
  while (true) {
    fs::path path = folder_ / fmt::format("{:06}.eml", last_number_ + 1);
    if (::renameat2(AT_FDCWD, incoming.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
      ++last_number_;
      return path;
    }
    // EINVAL: a file system without RENAME_NOREPLACE; a link refuses a taken name as well.
    if (errno == EINVAL && ::link(incoming.c_str(), path.c_str()) == 0) {
      IgnoreErrors(::unlink(incoming.c_str()));
      ++last_number_;
      return path;
    }
    if (errno != EEXIST) return platform::SystemError("create", path, errno);
    ++last_number_;
  }
}

Result<void> MailboxStore::AppendLine(std::string_view line) {
  const fs::path path = folder_ / kIndexName;
  const auto size = platform::FileSize(index_.get(), path);
  if (!size) return size.error();
  auto written = platform::WriteAll(index_.get(), path, line);
  if (!written && ::ftruncate(index_.get(), static_cast<off_t>(*size)) != 0) {
    return platform::SystemError("write", path, errno);
  }
  return written;
}

Result<fs::path> MailboxStore::Keep(const fs::path& incoming, std::uint64_t size, const ReceivedEnvelope& envelope) {
  auto path = MoveToNextNumber(incoming);
  if (!path) {
    IgnoreErrors(::unlink(incoming.c_str()));
    return path.error();
  }
  const auto appended = AppendLine(IndexLine(path->filename().string(), size, envelope, clock_->Now()));
  if (appended) return path;
  IgnoreErrors(::unlink(path->c_str()));
  --last_number_;
  return appended.error();
}

Result<void> IncomingMessage::Write(std::string_view content) {
  size_ += content.size();
  pending_ += content;
  return pending_.size() < kLargestPending ? Result<void>() : Flush();
}

Result<void> IncomingMessage::Flush() {
  if (!file_) {
    path_ = store_.NextIncomingPath();
    file_ = platform::UniqueFd(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file_) return platform::SystemError("create", path_, errno);
  }
  auto written = platform::WriteAll(file_.get(), path_, pending_);
  pending_.clear();
  return written;
}

Result<fs::path> IncomingMessage::Keep(const ReceivedEnvelope& envelope) {
  if (const auto flushed = Flush(); !flushed) {
    Drop();
    return flushed.error();
  }
  file_ = platform::UniqueFd();
  const std::uint64_t size = std::exchange(size_, 0);
  return store_.Keep(path_, size, envelope);
}

void IncomingMessage::Drop() {
  if (file_) IgnoreErrors(::unlink(path_.c_str()));
  file_ = platform::UniqueFd();
  pending_.clear();
  size_ = 0;
}

}  // namespace quillcast::smtp
