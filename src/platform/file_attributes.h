// Files of a person's own choice, and the one attribute that is asked about: whether their owner may write them.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

#include "platform/prompts.h"
#include "platform/result.h"
#include "platform/sentence.h"

namespace quillcast::platform {

// True for a file that exists and that its owner may not write.
bool IsLocked(const std::filesystem::path& file);

// Gives the owner the permission to write, where it is missing.
Result<void> Unlock(const std::filesystem::path& file);

// To be asked before a file of the person's choice is written: where it is locked, the person is, and it is unlocked
// when the answer is Yes. False when the file is to be left alone. The new content comes by a rename, which no
// permission of the old file holds up: an error here is the only thing that does.
Result<bool> MayWriteTo(const std::filesystem::path& file, Prompts& prompts);
// What is told then.
Sentence LeftLocked(const std::filesystem::path& file);

// ReplaceFile for such a file: what a link leads to gets the new content, a file that was there keeps its permissions,
// and a device or a pipe is refused.
Result<void> ReplaceChosenFile(const std::filesystem::path& path, const std::function<Result<void>(int fd)>& write);
Result<void> ReplaceChosenFile(const std::filesystem::path& path, std::string_view content);

}  // namespace quillcast::platform
