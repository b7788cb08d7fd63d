// Files of a person's own choice, and the one attribute that is asked about: whether their owner may write them.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/prompts.h"
#include "platform/result.h"
#include "platform/sentence.h"

namespace quillcast::platform {

// True for a file that exists and that its owner may not write.
bool IsLocked(const std::filesystem::path& file);

// Gives the owner the permission to write, where it is missing.
Result<void> Unlock(const std::filesystem::path& file);

// What the program keeps itself, and what no file of a person's choice may be.
struct OwnFiles {
  std::vector<std::filesystem::path> kept;  // files with what their database keeps beside them, and whole folders
  std::vector<std::filesystem::path> free;  // folders within those that people may write into
};

// kNotPermitted where a path leads to one of these, by whichever spelling or link.
Result<void> CheckIsNotOwn(const std::filesystem::path& path, const OwnFiles& own);

// The names that it refuses in a folder, which it does not refuse itself, where nothing has them yet.
std::vector<std::string> OwnNamesIn(const std::filesystem::path& folder, const OwnFiles& own);

// To be asked before a file of the person's choice is written: where it is locked, the person is, and it is unlocked
// when the answer is Yes. False when the file is to be left alone. The new content comes by a rename, which no
// permission of the old file holds up: an error here is the only thing that does. The program's own files are refused
// first, locked or not.
Result<bool> MayWriteTo(const std::filesystem::path& file, const OwnFiles& own, Prompts& prompts);
// The question alone, and what follows it.
Result<bool> AskToUnlock(const std::filesystem::path& file, Prompts& prompts);
// What is told then.
Sentence LeftLocked(const std::filesystem::path& file);

// What whoever names that file has to know before anything is written: that another is replaced. Nothing where none is
// there. Errors: those of a path that is not written to.
Result<std::optional<Sentence>> DescribeTarget(const std::filesystem::path& file, const OwnFiles& own);
// A rename would replace a locked file all the same; it is left, and who wants it is asked when browsing for it.
Error TargetIsLocked(const std::filesystem::path& file);

// ReplaceFile for a file of the person's choice: what a link leads to gets the new content, a file that was there keeps
// its permissions; a device, a pipe, a link to nothing and the program's own files are refused before anything is
// opened.
Result<void> ReplaceChosenFile(const std::filesystem::path& path, const OwnFiles& own,
                               const std::function<Result<void>(int fd)>& write);
Result<void> ReplaceChosenFile(const std::filesystem::path& path, const OwnFiles& own, std::string_view content);

}  // namespace quillcast::platform
