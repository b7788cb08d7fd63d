#include "message/scratch_bytes.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace quillcast::message {
namespace {

constexpr std::size_t kKeptInMemory = 1024UL * 1024;
constexpr std::uint64_t kReadBlock = 256UL * 1024;

Error ForScratch(Error error) {
  error.remedy = "Attachments are encoded into a scratch file there; make room, or set Temp to a folder with more.";
  return error;
}

}  // namespace

Result<void> ScratchBytes::Append(std::string_view bytes) {
  if (!scratch_ && memory_.size() + bytes.size() <= kKeptInMemory) {
    memory_.reserve(kKeptInMemory);
    memory_ += bytes;
    size_ += bytes.size();
    return {};
  }
  if (!scratch_) {
    auto scratch = platform::OpenScratchFile(folder_);
    if (!scratch) return ForScratch(scratch.error());
    scratch_ = std::move(*scratch);
  }
  const auto written = platform::WriteAll(scratch_.get(), folder_, bytes);
  if (!written) return ForScratch(written.error());
  size_ += bytes.size();
  return {};
}

Result<void> ScratchBytes::CutBack(std::uint64_t size) {
  if (scratch_) {
    const auto end = static_cast<off_t>(size - std::min<std::uint64_t>(size, memory_.size()));
    if (::ftruncate(scratch_.get(), end) != 0 || ::lseek(scratch_.get(), end, SEEK_SET) != end) {
      return ForScratch(platform::SystemError("write", folder_, errno));
    }
  }
  if (size < memory_.size()) memory_.resize(size);
  size_ = size;
  return {};
}

Result<std::string_view> ScratchBytes::ReadAt(std::uint64_t offset, std::uint64_t most, std::string& buffer) const {
  if (offset >= size_) return std::string_view();
  if (offset < memory_.size()) return std::string_view(memory_).substr(offset, most);
  const auto place = static_cast<off_t>(offset - memory_.size());
  buffer.resize(std::min(kReadBlock, most));
  for (;;) {
    const ssize_t n = ::pread(scratch_.get(), buffer.data(), buffer.size(), place);
    if (n > 0) return std::string_view(buffer).substr(0, static_cast<std::size_t>(n));
    if (n == 0) return platform::SystemError("read", folder_, EIO);  // shorter than what was written
    if (errno != EINTR) return platform::SystemError("read", folder_, errno);
  }
}

}  // namespace quillcast::message
