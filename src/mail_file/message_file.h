// A message file that is open, read by place.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string_view>

#include "platform/file.h"

namespace quillcast::mail_file {

class MessageFile {
 public:
  static Result<std::shared_ptr<const MessageFile>> Open(const std::filesystem::path& path);

  // Up to `size` bytes from `offset` on; fewer only at the end of the file. Any thread may.
  Result<std::size_t> ReadAt(std::uint64_t offset, char* buffer, std::size_t size) const;

  std::uint64_t size() const { return size_; }
  // What ends its lines: LF, with or without a CR before it, or CR alone where its first line ends so.
  char line_end() const { return line_end_; }
  const std::filesystem::path& path() const { return path_; }

 private:
  MessageFile(std::filesystem::path path, platform::UniqueFd fd, std::uint64_t size)
      : path_(std::move(path)), fd_(std::move(fd)), size_(size) {}
  Result<void> FindLineEnd();

  std::filesystem::path path_;
  platform::UniqueFd fd_;
  std::uint64_t size_;
  char line_end_ = '\n';
};

}  // namespace quillcast::mail_file
