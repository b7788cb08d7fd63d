// The end of a message that is the same for every recipient: pictures, attachments and the boundaries between them,
// already encoded. Small ones stay in memory; larger ones go to a scratch file that has no name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "platform/result.h"
#include "smtp/result_code.h"

namespace quillcast::sending {

// Why a file could not be taken in, with the code that its recipients get.
struct FileTrouble {
  smtp::ResultCode code = smtp::ResultCode::kFileNotOpened;
  Error error;
};

class SharedTail {
 public:
  // The scratch file is made in `scratch_folder` when it is needed.
  explicit SharedTail(std::filesystem::path scratch_folder) : scratch_folder_(std::move(scratch_folder)) {}

  std::optional<FileTrouble> Append(std::string_view bytes);
  // Base64 in lines of 76, each line ended, read and encoded block by block.
  std::optional<FileTrouble> AppendFileAsBase64(int fd, const std::filesystem::path& file);

  std::uint64_t size() const { return size_; }

  // The bytes from `offset` on, as many as are at hand; empty at the end. `buffer` is room for those that have to be
  // read from the scratch file.
  Result<std::string_view> ReadAt(std::uint64_t offset, std::string& buffer) const;

 private:
  std::filesystem::path scratch_folder_;
  std::string memory_;  // all of it, until it is spilled
  platform::UniqueFd scratch_;
  std::uint64_t size_ = 0;
};

}  // namespace quillcast::sending
