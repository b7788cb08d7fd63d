#include "document/attachment_list.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/text.h"

namespace quillcast::document {

bool AttachmentList::Add(std::string_view path) {
  if (std::find(paths_.begin(), paths_.end(), path) != paths_.end()) return false;
  paths_.emplace_back(path);
  return true;
}

void AttachmentList::AddPicked(std::string_view picked) {
  while (picked.ends_with('\0')) picked.remove_suffix(1);
  if (picked.empty()) return;
  const auto parts = platform::Split(picked, '\0');
  if (parts.size() == 1) {
    Add(parts.front());
    return;
  }
  std::string folder(parts.front());
  if (!folder.ends_with('/')) folder += '/';
  for (auto name = parts.begin() + 1; name != parts.end(); ++name) Add(folder + std::string(*name));
}

void AttachmentList::Remove(std::string_view path) { std::erase(paths_, path); }

AttachmentTotal TotalOf(const AttachmentList& list) {
  AttachmentTotal total;
  for (const std::filesystem::path path : list.paths()) {
    std::error_code failed;
    const bool is_there = std::filesystem::is_regular_file(path, failed);
    const auto size = is_there ? std::filesystem::file_size(path, failed) : 0;
    ++total.files;
    if (!is_there || failed) {
      ++total.missing;
    } else {
      total.bytes += size;
    }
  }
  return total;
}

AttachmentDeletion DeleteAttachment(AttachmentList& list, std::string_view shown, platform::Prompts& prompts) {
  if (list.paths().empty()) {
    prompts.Warn("There is no file to delete.");
    return AttachmentDeletion::kNothingToDelete;
  }
  if (shown.empty()) {
    prompts.Warn("Please specify a file to delete.");
    return AttachmentDeletion::kNothingShown;
  }
  if (prompts.Ask(fmt::format("Are you sure you want to delete '{}'?", shown)) != platform::Answer::kYes) {
    return AttachmentDeletion::kKept;
  }
  list.Remove(shown);
  return AttachmentDeletion::kDeleted;
}

}  // namespace quillcast::document
