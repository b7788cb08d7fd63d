// Files and folders as this system uses them: private (0600 and 0700), replaced whole or not at all, every failure told
// with the path and the system's reason.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/result.h"

namespace quillcast::platform {

// As much of a file as is read or written at a time, in bytes.
inline constexpr std::size_t kFileBlock = std::size_t{256} * 1024;

class CancelToken;

// An open file descriptor that closes itself.
class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  // Assigning swaps: what was held before is closed by the other one's end.
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~UniqueFd() { Close(); }

  // -1 where nothing is open.
  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  // At once; again is harmless. What close(2) answers is not looked at: a write that has to be known to be on the disk
  // was followed by fsync(2), see ReplaceFile.
  void Close();

 private:
  int fd_ = -1;
};

// The Error for a failed system call on a path, from errno: what the system said, and a remedy where one is known
// (disk full, not permitted, is a folder). `doing` is a verb phrase: "read", "create".
Error SystemError(std::string_view doing, const std::filesystem::path& path, int error_number);

// The Error for what is no regular file, by its st_mode.
Error NotAnOrdinaryFile(const std::filesystem::path& path, mode_t mode);

// Opens a regular file for reading. Folders, devices and pipes are refused.
Result<UniqueFd> OpenForReading(const std::filesystem::path& path);

// The size in bytes of an open file.
Result<std::uint64_t> FileSize(int fd, const std::filesystem::path& path);

// Reads up to `size` bytes, fewer only at the end of the file. Goes on after EINTR.
Result<std::size_t> ReadSome(int fd, const std::filesystem::path& path, char* buffer, std::size_t size);

// Writes all of it, or fails. Goes on after EINTR and short writes.
Result<void> WriteAll(int fd, const std::filesystem::path& path, std::string_view bytes);

// The whole content of a regular file of at most `limit` bytes.
Result<std::string> ReadFile(const std::filesystem::path& path, std::uint64_t limit);

// The same, also out of a pipe, to its end: what a person names there is often the output of a command.
// Waits for it, until a signal comes.
Result<std::string> ReadFileOrPipe(const std::filesystem::path& path, std::uint64_t limit);

// Puts `content` under the name by a rename, so that a reader sees the old file or the new one and a failure leaves the
// old one. Mode 0600.
Result<void> ReplaceFile(const std::filesystem::path& path, std::string_view content);

// The same for content that is written piece by piece: `write` gets the descriptor of a new file beside `path`, which
// takes the name when it succeeds and is removed when it fails.
Result<void> ReplaceFile(const std::filesystem::path& path, const std::function<Result<void>(int fd)>& write);

// The same where nothing stands at `path`; what does is never replaced: false then.
Result<bool> WriteFileIfAbsent(const std::filesystem::path& path, std::string_view content);

// Another name in the same file system, where nothing has it yet: false else.
Result<bool> RenameIfAbsent(const std::filesystem::path& from, const std::filesystem::path& to);

// A copy of the content, put under the name `to` in the same way.
Result<void> CopyFile(const std::filesystem::path& from, const std::filesystem::path& to);

// The same where nothing stands at `to`. What does, a link that leads nowhere included, is never replaced, however many
// do this at once: false then. A request by `cancel` ends it with kTryAgain, and nothing at `to`.
Result<bool> CopyFileIfAbsent(const std::filesystem::path& from, const std::filesystem::path& to,
                              const CancelToken* cancel = nullptr);

// Makes the folder and those above it that are missing, each 0700. A folder that exists is left as it is.
Result<void> EnsureFolder(const std::filesystem::path& folder);

// A file that is open and has no name: scratch space that vanishes with the process. Made in `folder`, 0600.
Result<UniqueFd> OpenScratchFile(const std::filesystem::path& folder);

// True while some FileWriter, of this process or another, says so about the file.
bool IsBeingWritten(const std::filesystem::path& file);

// Collects small writes and hands them on in blocks. Flush before the end of its life, to hear of a failure; after a
// failure all later calls fail with the same error, and the file ends with the last line that went into it whole.
class FileWriter {
 public:
  // Creates the file, with mode 0600, in the place of what stands there: a link is not followed, a pipe not opened, and
  // nobody else's file written into.
  static Result<FileWriter> CreateAnew(const std::filesystem::path& path);
  // Creates the file, and fails with kCannotCreate when it exists.
  static Result<FileWriter> CreateNew(const std::filesystem::path& path);

  // Says to others, for as long as this lives, that the file is being written: see IsBeingWritten. Where the file
  // system knows no locks, nothing is said.
  void SayItIsBeingWritten() const;

  // 64 KiB wait here, so that a failure may be that of what an earlier call brought. Flush hands them to the system;
  // neither waits for the disk.
  Result<void> Write(std::string_view text);
  Result<void> Flush();
  const std::filesystem::path& path() const { return path_; }

 private:
  FileWriter(UniqueFd fd, std::filesystem::path path);
  void CutTornLine();

  UniqueFd fd_;
  std::filesystem::path path_;
  std::string pending_;
  std::uint64_t flushed_ = 0;      // bytes
  std::uint64_t whole_lines_ = 0;  // bytes of them
  std::optional<Error> failed_;
};

}  // namespace quillcast::platform
