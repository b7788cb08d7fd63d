#include "mail_file/message_file.h"

#include <unistd.h>

#include <array>
#include <cerrno>

namespace quillcast::mail_file {

Result<std::shared_ptr<const MessageFile>> MessageFile::Open(const std::filesystem::path& path) {
  auto fd = platform::OpenForReading(path);
  if (!fd) return fd.error();
  const auto size = platform::FileSize(fd->get(), path);
  if (!size) return size.error();
  MessageFile file(path, std::move(*fd), *size);
  if (const auto found = file.FindLineEnd(); !found) return found.error();
  return std::shared_ptr<const MessageFile>(std::make_shared<MessageFile>(std::move(file)));
}

Result<std::size_t> MessageFile::ReadAt(std::uint64_t offset, char* buffer, std::size_t size) const {
  std::size_t filled = 0;
  while (filled < size) {
    const auto count = ::pread(fd_.get(), buffer + filled, size - filled, static_cast<off_t>(offset + filled));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return platform::SystemError("read", path_, errno);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  return filled;
}

Result<void> MessageFile::FindLineEnd() {
  std::array<char, 4096> block;
  const auto count = ReadAt(0, block.data(), block.size());
  if (!count) return count.error();
  const std::string_view text(block.data(), *count);
  const auto end = text.find_first_of("\r\n");
  if (end == std::string_view::npos || text[end] == '\n' || end + 1 == text.size()) return {};
  if (text[end + 1] != '\n') line_end_ = '\r';
  return {};
}

}  // namespace quillcast::mail_file
