#include "sending/shared_tail.h"

#include <unistd.h>

#include <cerrno>

#include "platform/base64.h"

namespace quillcast::sending {
namespace {

constexpr std::size_t kKeptInMemory = 1024UL * 1024;
constexpr std::size_t kReadBlock = 256UL * 1024;
constexpr std::size_t kFileBlock = 57UL * 4096;  // whole lines of base64

FileTrouble ScratchTrouble(Error error) {
  error.remedy = "Attachments are encoded into a scratch file there; make room, or set Temp to a folder with more.";
  return {smtp::ResultCode::kFileNotRead, std::move(error)};
}

}  // namespace

std::optional<FileTrouble> SharedTail::Append(std::string_view bytes) {
  size_ += bytes.size();
  if (!scratch_ && memory_.size() + bytes.size() <= kKeptInMemory) {
    memory_ += bytes;
    return {};
  }
  if (!scratch_) {
    auto scratch = platform::OpenScratchFile(scratch_folder_);
    if (!scratch) return ScratchTrouble(scratch.error());
    scratch_ = std::move(*scratch);
    const auto spilled = platform::WriteAll(scratch_.get(), scratch_folder_, memory_);
    if (!spilled) return ScratchTrouble(spilled.error());
    memory_ = {};
  }
  const auto written = platform::WriteAll(scratch_.get(), scratch_folder_, bytes);
  if (!written) return ScratchTrouble(written.error());
  return {};
}

std::optional<FileTrouble> SharedTail::AppendFileAsBase64(int fd, const std::filesystem::path& file) {
  platform::Base64LineEncoder encoder;
  std::string block(kFileBlock, '\0');
  std::string encoded;
  for (;;) {
    const auto got = platform::ReadSome(fd, file, block.data(), block.size());
    if (!got) return FileTrouble{smtp::ResultCode::kFileNotRead, got.error()};
    encoded.clear();
    if (*got == 0) encoder.Finish(encoded);
    if (*got != 0) encoder.Encode(std::string_view(block).substr(0, *got), encoded);
    if (auto trouble = Append(encoded)) return trouble;
    if (*got == 0) return {};
  }
}

Result<std::string_view> SharedTail::ReadAt(std::uint64_t offset, std::string& buffer) const {
  if (offset >= size_) return std::string_view();
  if (!scratch_) return std::string_view(memory_).substr(offset);
  buffer.resize(kReadBlock);
  for (;;) {
    const ssize_t n = ::pread(scratch_.get(), buffer.data(), buffer.size(), static_cast<off_t>(offset));
    if (n > 0) return std::string_view(buffer).substr(0, static_cast<std::size_t>(n));
    if (n == 0) return platform::SystemError("read", scratch_folder_, EIO);  // shorter than what was written
    if (errno != EINTR) return platform::SystemError("read", scratch_folder_, errno);
  }
}

}  // namespace quillcast::sending
