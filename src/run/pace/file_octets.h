// Octets of an open file by their place: read, written, and locked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

#include "platform/result.h"

namespace quillcast::run {

// Fewer than asked for at the end of the file alone.
Result<std::size_t> ReadAt(int fd, const std::filesystem::path& path, std::int64_t place, std::span<char> octets);
Result<void> WriteAt(int fd, const std::filesystem::path& path, std::int64_t place, std::string_view octets);

struct OctetRange {
  std::int64_t first = 0;
  std::int64_t size = 1;
};

// Of the open file and not of the process: whoever dies loses them, and no other descriptor of the file that is closed
// takes them away. The octets need not be there.
enum class LockKind { kShared, kAlone, kNone };

// False when somebody else has what is in its way. kNone gives back what is held.
Result<bool> TryLock(int fd, const std::filesystem::path& path, OctetRange range, LockKind kind);
// Whether somebody else holds any of it.
Result<bool> IsLockedByOthers(int fd, const std::filesystem::path& path, OctetRange range);

}  // namespace quillcast::run
