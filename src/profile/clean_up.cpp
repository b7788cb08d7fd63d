#include "profile/clean_up.h"

#include "platform/file_attributes.h"
#include "platform/result.h"

namespace quillcast::profile {
namespace {

namespace fs = std::filesystem;

void Remove(const fs::path& file) {
  IgnoreErrors(platform::Unlock(file));
  fs::remove(file, IgnoreErrors());
}

void RemoveTree(const fs::path& folder) {
  std::error_code failed;  // ends the walk; remove_all takes what it can all the same
  for (auto entry = fs::recursive_directory_iterator(folder, failed);
       !failed && entry != fs::recursive_directory_iterator(); entry.increment(failed)) {
    if (entry->is_directory(failed) && !entry->is_symlink(failed)) {
      fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, failed);
    }
  }
  fs::remove_all(folder, IgnoreErrors());
}

void RemoveTemporaries(const fs::path& folder) {
  std::error_code failed;
  for (auto entry = fs::directory_iterator(folder, failed); !failed && entry != fs::directory_iterator();
       entry.increment(failed)) {
    if (entry->path().extension() == ".tmp" && entry->is_regular_file(IgnoreErrors())) Remove(entry->path());
  }
}

void RemoveImportedBodies(const fs::path& folder, const IsNeeded& is_needed) {
  bool all_go = true;
  std::error_code failed;
  for (auto entry = fs::directory_iterator(folder, failed); !failed && entry != fs::directory_iterator();
       entry.increment(failed)) {
    if (is_needed(entry->path().filename().string())) {
      all_go = false;
    } else {
      RemoveTree(entry->path());
    }
  }
  if (all_go) RemoveTree(folder);
}

}  // namespace

void CleanUpAtClose(const Folders& folders, const IsNeeded& imported_body_is_needed) {
  Remove(folders.PreviewMessage());
  Remove(folders.PreviewBody());
  // A folder that a variable names may hold anybody's files.
  if (folders.program_is_installed) RemoveTemporaries(folders.program);
  RemoveImportedBodies(folders.ImportBody(), imported_body_is_needed);
}

}  // namespace quillcast::profile
