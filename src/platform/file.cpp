#include "platform/file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/cancel.h"

namespace quillcast::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kWriterBlock = 64UL * 1024;
constexpr std::size_t kCopyBlock = 64UL * 1024;

Failure FailureOf(int error_number, std::string_view doing) {
  switch (error_number) {
    case ENOENT:
    case ENOTDIR:
    case EISDIR:
      return doing == "create" ? Failure::kCannotCreate : Failure::kNoInput;
    case EACCES:
    case EPERM:
    case EROFS:
      return doing == "read" ? Failure::kNoInput : Failure::kCannotCreate;
    case EEXIST:
      return Failure::kCannotCreate;
    default:
      return Failure::kIo;
  }
}

std::string RemedyOf(int error_number, std::string_view doing) {
  switch (error_number) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return "Free some space there and try again; what was there before is still there.";
    case EACCES:
    case EPERM:
      return fmt::format("Give yourself the permission to {} it, or choose another place.", doing);
    case EROFS:
      return "That file system cannot be written to; choose another place.";
    case ENOENT:
    case ENOTDIR:
      return "Check the name and the folder.";
    case EISDIR:
      return "Name a file in that folder.";
    case EEXIST:
      return "Move away what has that name, and try again.";
    default:
      return {};
  }
}

// Writes a new file beside `path` and gives it the name by `place`, which returns 0 or sets errno. False when `place`
// said that something stands there.
Result<bool> WriteAndPlace(const fs::path& path, int (*place)(const char* from, const char* to),
                           const std::function<Result<void>(int fd)>& write) {
  std::string temporary = path.string() + ".XXXXXX";
  UniqueFd fd(::mkostemp(temporary.data(), O_CLOEXEC));
  if (!fd) return SystemError("create", path, errno);
  auto done = write(fd.get());
  if (done && ::fsync(fd.get()) != 0) done = SystemError("write", path, errno);
  bool in_the_way = false;
  if (done && place(temporary.c_str(), path.c_str()) != 0) {
    in_the_way = errno == EEXIST;
    done = SystemError("create", path, errno);
  }
  if (!done) IgnoreErrors(::unlink(temporary.c_str()));
  return done || in_the_way ? Result<bool>(static_cast<bool>(done)) : Result<bool>(done.error());
}

int PlaceIfAbsent(const char* from, const char* to) {
  if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return -1;
  // A file system that cannot rename so; a second name is never made over another either.
  if (::link(from, to) != 0) return -1;
  IgnoreErrors(::unlink(from));
  return 0;
}

Result<void> CopyContent(int from, const fs::path& from_path, int to, const fs::path& to_path,
                         const CancelToken* cancel = nullptr) {
  std::string block(kCopyBlock, '\0');
  for (;;) {
    if (cancel != nullptr && cancel->Requested() != Stop::kNone) {
      return Error{Failure::kTryAgain, Say("The copying of {} was stopped.", from_path.string()), ""};
    }
    const auto got = ReadSome(from, from_path, block.data(), block.size());
    if (!got) return got.error();
    if (*got == 0) return {};
    auto written = WriteAll(to, to_path, std::string_view(block).substr(0, *got));
    if (!written) return written;
  }
}

Error TooLarge(const fs::path& path, std::string_view detail) {
  return {Failure::kBadData, Say("{} is too large: {}.", path.string(), detail), "Use a smaller file."};
}

}  // namespace

void UniqueFd::Close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

Error SystemError(std::string_view doing, const fs::path& path, int error_number) {
  return {FailureOf(error_number, doing), Say("Cannot {} {}: {}.", doing, path.string(), std::strerror(error_number)),
          RemedyOf(error_number, doing)};
}

Error NotAnOrdinaryFile(const fs::path& path, mode_t mode) {
  if (S_ISDIR(mode)) return SystemError("read", path, EISDIR);
  return {Failure::kNoInput, Say("Cannot read {}: it is a device or a pipe.", path.string()), "Name an ordinary file."};
}

Result<UniqueFd> OpenForReading(const fs::path& path) {
  // O_NONBLOCK: a pipe without a writer is refused below instead of waited for.
  UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!fd) return SystemError("read", path, errno);
  struct stat status {};
  if (::fstat(fd.get(), &status) != 0) return SystemError("read", path, errno);
  if (!S_ISREG(status.st_mode)) return NotAnOrdinaryFile(path, status.st_mode);
  return fd;
}

Result<std::uint64_t> FileSize(int fd, const fs::path& path) {
  struct stat status {};
  if (::fstat(fd, &status) != 0) return SystemError("read", path, errno);
  return static_cast<std::uint64_t>(status.st_size);
}

Result<std::size_t> ReadSome(int fd, const fs::path& path, char* buffer, std::size_t size) {
  std::size_t got = 0;
  while (got < size) {
    const ssize_t n = ::read(fd, buffer + got, size - got);
    if (n == 0) break;
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return SystemError("read", path, errno);
    got += static_cast<std::size_t>(n);
  }
  return got;
}

Result<void> WriteAll(int fd, const fs::path& path, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return SystemError("write", path, errno);
    bytes.remove_prefix(static_cast<std::size_t>(n));
  }
  return {};
}

Result<std::string> ReadFile(const fs::path& path, std::uint64_t limit) {
  auto fd = OpenForReading(path);
  if (!fd) return fd.error();
  const auto size = FileSize(fd->get(), path);
  if (!size) return size.error();
  if (*size > limit) return TooLarge(path, fmt::format("{} bytes, at most {} are read", *size, limit));
  std::string content(*size, '\0');
  const auto got = ReadSome(fd->get(), path, content.data(), content.size());
  if (!got) return got.error();
  content.resize(*got);
  return content;
}

Result<std::string> ReadFileOrPipe(const fs::path& path, std::uint64_t limit) {
  if (!fs::is_fifo(path, IgnoreErrors())) return ReadFile(path, limit);
  UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!fd) return SystemError("read", path, errno);
  std::string content(limit + 1, '\0');
  std::size_t size = 0;
  for (ssize_t got = 1; got > 0 && size < content.size(); size += static_cast<std::size_t>(got)) {
    got = ::read(fd.get(), content.data() + size, content.size() - size);
    if (got < 0) return SystemError("read", path, errno);  // EINTR as well: the person who waits has had enough
  }
  if (size > limit) return TooLarge(path, fmt::format("at most {} bytes are read", limit));
  content.resize(size);
  return content;
}

Result<void> ReplaceFile(const fs::path& path, std::string_view content) {
  return ReplaceFile(path, [&](int fd) { return WriteAll(fd, path, content); });
}

Result<void> ReplaceFile(const fs::path& path, const std::function<Result<void>(int fd)>& write) {
  const auto placed = WriteAndPlace(path, ::rename, write);
  return placed ? Result<void>() : placed.error();
}

Result<bool> WriteFileIfAbsent(const fs::path& path, std::string_view content) {
  return WriteAndPlace(path, PlaceIfAbsent, [&](int fd) { return WriteAll(fd, path, content); });
}

Result<bool> RenameIfAbsent(const fs::path& from, const fs::path& to) {
  if (PlaceIfAbsent(from.c_str(), to.c_str()) == 0) return true;
  return errno == EEXIST ? Result<bool>(false) : SystemError("rename", from, errno);
}

Result<void> CopyFile(const fs::path& from, const fs::path& to) {
  const auto source = OpenForReading(from);
  if (!source) return source.error();
  return ReplaceFile(to, [&](int fd) { return CopyContent(source->get(), from, fd, to); });
}

Result<bool> CopyFileIfAbsent(const fs::path& from, const fs::path& to, const CancelToken* cancel) {
  std::error_code failed;
  const auto there = fs::symlink_status(to, failed).type();
  if (there == fs::file_type::none) return SystemError("create", to, failed.value());
  if (there != fs::file_type::not_found) return false;
  const auto source = OpenForReading(from);
  if (!source) return source.error();
  return WriteAndPlace(to, PlaceIfAbsent, [&](int fd) { return CopyContent(source->get(), from, fd, to, cancel); });
}

Result<void> EnsureFolder(const fs::path& folder) {
  fs::path so_far;
  for (const auto& part : folder) {
    so_far /= part;
    if (part.empty()) continue;  // the empty last part of a path that ends in a separator
    if (::mkdir(so_far.c_str(), 0700) == 0) continue;
    const int error_number = errno;
    struct stat status {};
    if (::stat(so_far.c_str(), &status) != 0) return SystemError("create", so_far, error_number);
    if (!S_ISDIR(status.st_mode)) return SystemError("create", so_far, ENOTDIR);
  }
  return {};
}

Result<UniqueFd> OpenScratchFile(const fs::path& folder) {
  UniqueFd fd(::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (fd) return fd;
  std::string name = (folder / "scratch.XXXXXX").string();  // for file systems that have no O_TMPFILE
  UniqueFd named(::mkostemp(name.data(), O_CLOEXEC));
  if (!named) return SystemError("create", name, errno);
  IgnoreErrors(::unlink(name.c_str()));  // then it has a name for as long as the process lives
  return named;
}

FileWriter::FileWriter(UniqueFd fd, fs::path path) : fd_(std::move(fd)), path_(std::move(path)) {}

Result<FileWriter> FileWriter::CreateNew(const fs::path& path) {
  UniqueFd fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!fd) return SystemError("create", path, errno);
  return FileWriter(std::move(fd), path);
}

Result<FileWriter> FileWriter::CreateAnew(const fs::path& path) {
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) return SystemError("replace", path, errno);
  return CreateNew(path);
}

void FileWriter::SayItIsBeingWritten() const { IgnoreErrors(::flock(fd_.get(), LOCK_EX | LOCK_NB)); }

bool IsBeingWritten(const std::filesystem::path& file) {
  const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  return fd && ::flock(fd.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

Result<void> FileWriter::Write(std::string_view text) {
  if (failed_) return *failed_;
  pending_ += text;
  return pending_.size() < kWriterBlock ? Result<void>() : Flush();
}

Result<void> FileWriter::Flush() {
  if (failed_) return *failed_;
  auto done = WriteAll(fd_.get(), path_, pending_);
  if (done) {
    const auto end = pending_.rfind('\n');
    if (end != std::string::npos) whole_lines_ = flushed_ + end + 1;
    flushed_ += pending_.size();
  } else {
    failed_ = done.error();
    CutTornLine();
  }
  pending_.clear();
  return done;
}

// Some of the bytes may have gone in.
void FileWriter::CutTornLine() {
  const off_t size = ::lseek(fd_.get(), 0, SEEK_END);
  if (size < 0) return;
  const auto written = static_cast<std::uint64_t>(size) - flushed_;
  const auto end = written == 0 ? std::string::npos : pending_.rfind('\n', written - 1);
  if (end != std::string::npos) whole_lines_ = flushed_ + end + 1;
  IgnoreErrors(::ftruncate(fd_.get(), static_cast<off_t>(whole_lines_)));  // the failure of the write is told
}

}  // namespace quillcast::platform
