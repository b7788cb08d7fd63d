// The files that go with a message: full paths, in order, no two alike.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/prompts.h"

namespace quillcast::document {

// Text alone: whether a file is there is asked by TotalOf, and by the run when it reads it.
class AttachmentList {
 public:
  // Appends the path unless exactly the same text is there already. True when it was added.
  bool Add(std::string_view path);

  // What a file dialog with several selection returns: one full path, or a folder and then the names of files in it,
  // parted by NUL characters. Nothing when it is empty.
  void AddPicked(std::string_view picked);

  // The path to the letter; nothing when it is not there.
  void Remove(std::string_view path);

  const std::vector<std::string>& paths() const { return paths_; }
  bool operator==(const AttachmentList&) const = default;

 private:
  std::vector<std::string> paths_;
};

// True at the moment when TotalOf looked.
struct AttachmentTotal {
  std::int64_t files = 0;
  std::uint64_t bytes = 0;   // of those that are there
  std::int64_t missing = 0;  // or no regular file
};
AttachmentTotal TotalOf(const AttachmentList& list);

// What the delete command did.
enum class AttachmentDeletion { kNothingToDelete, kNothingShown, kKept, kDeleted };

// The command that removes the shown entry, with its checks and its question. After kDeleted the list shows its first
// remaining entry; after kNothingShown the focus goes to the list. The file itself is never touched.
AttachmentDeletion DeleteAttachment(AttachmentList& list, std::string_view shown, platform::Prompts& prompts);

}  // namespace quillcast::document
