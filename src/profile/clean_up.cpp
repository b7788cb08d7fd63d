#include "profile/clean_up.h"

#include "platform/file_attributes.h"
#include "platform/result.h"

namespace quillcast::profile {
namespace {

namespace fs = std::filesystem;

void Remove(const fs::path& file) {
  IgnoreErrors(platform::Unlock(file));
  std::error_code ignored;
  fs::remove(file, ignored);
}

void RemoveTree(const fs::path& folder) {
  std::error_code ignored;
  for (auto entry = fs::recursive_directory_iterator(folder, ignored);
       !ignored && entry != fs::recursive_directory_iterator(); entry.increment(ignored)) {
    if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
      fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
    }
  }
  fs::remove_all(folder, ignored);
}

void RemoveTemporaries(const fs::path& folder) {
  std::error_code ignored;
  for (auto entry = fs::directory_iterator(folder, ignored); !ignored && entry != fs::directory_iterator();
       entry.increment(ignored)) {
    if (entry->path().extension() == ".tmp" && entry->is_regular_file(ignored)) Remove(entry->path());
  }
}

}  // namespace

void CleanUpAtClose(const Folders& folders) {
  Remove(folders.PreviewMessage());
  Remove(folders.PreviewBody());
  // A folder that a variable names may hold anybody's files.
  if (folders.program_is_installed) RemoveTemporaries(folders.program);
  RemoveTree(folders.ImportBody());
}

}  // namespace quillcast::profile
