// The one attribute of files that this system asks about: whether their owner may write them.
#pragma once

#include <filesystem>

#include "platform/result.h"

namespace quillcast::platform {

// True for a file that exists and that its owner may not write.
bool IsLocked(const std::filesystem::path& file);

// Gives the owner the permission to write, where it is missing.
Result<void> Unlock(const std::filesystem::path& file);

}  // namespace quillcast::platform
