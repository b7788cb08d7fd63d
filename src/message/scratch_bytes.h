// Bytes that grow and are read many times. The first stay in memory; more go to a scratch file that has no name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "platform/result.h"

namespace quillcast::message {

// The first MiB stays in memory. The file goes with this, or with the process.
class ScratchBytes {
 public:
  // The scratch file is made in `folder` when it is needed.
  explicit ScratchBytes(std::filesystem::path folder) : folder_(std::move(folder)) {}

  // Errors are those of making and writing the file, with the remedy to make room in its folder or name another.
  Result<void> Append(std::string_view bytes);
  // Takes away what was appended since the size was `size`.
  Result<void> CutBack(std::uint64_t size);
  std::uint64_t size() const { return size_; }

  // The bytes from `offset` on, `most` or as many as are at hand; empty at the end. `buffer` is room for those that
  // have to be read from the scratch file. What is appended later leaves the view as it is: a message may be half
  // written when the next one needs another form of its attachments.
  Result<std::string_view> ReadAt(std::uint64_t offset, std::uint64_t most, std::string& buffer) const;

 private:
  std::filesystem::path folder_;
  std::string memory_;          // the beginning; it never moves
  platform::UniqueFd scratch_;  // what lies behind it
  std::uint64_t size_ = 0;
};

}  // namespace quillcast::message
