// The one attribute of files that this system asks about: whether their owner may write them.
#pragma once

#include <filesystem>

#include "platform/prompts.h"
#include "platform/result.h"

namespace quillcast::platform {

// True for a file that exists and that its owner may not write.
bool IsLocked(const std::filesystem::path& file);

// Gives the owner the permission to write, where it is missing.
Result<void> Unlock(const std::filesystem::path& file);

// To be asked before a file of the person's choice is written: where it is locked, the person is, and it is unlocked
// when the answer is Yes. False when the file is to be left alone. The new content comes by a rename, which no
// permission of the old file holds up: an error here is the only thing that does.
Result<bool> MayWriteTo(const std::filesystem::path& file, Prompts& prompts);

}  // namespace quillcast::platform
