// Keeps two programs, or two threads, from changing what belongs together in a folder at the same time.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <utility>

#include "platform/cancel.h"
#include "platform/file.h"

namespace quillcast::platform {

// Held until it goes, with its program at the latest. It is the folder itself that is locked (flock(2)): no file stays
// behind, and nothing else in it is hindered. Where the file system knows no locks it is held by everybody.
class FolderLock {
 public:
  // nullopt where somebody else has it for longer than that, or after a cancel.
  static std::optional<FolderLock> Take(const std::filesystem::path& folder, std::chrono::milliseconds patience,
                                        const CancelToken& cancel);

 private:
  explicit FolderLock(UniqueFd folder) : folder_(std::move(folder)) {}
  UniqueFd folder_;
};

}  // namespace quillcast::platform
