#include "platform/file_attributes.h"

#include "platform/file.h"

namespace quillcast::platform {

namespace fs = std::filesystem;

bool IsLocked(const fs::path& file) {
  std::error_code failed;
  const auto permissions = fs::status(file, failed).permissions();
  return !failed && permissions != fs::perms::unknown && (permissions & fs::perms::owner_write) == fs::perms::none;
}

Result<void> Unlock(const fs::path& file) {
  if (!IsLocked(file)) return {};
  std::error_code failed;
  fs::permissions(file, fs::perms::owner_write, fs::perm_options::add, failed);
  if (failed) return SystemError("unlock", file, failed.value());
  return {};
}

Result<bool> MayWriteTo(const fs::path& file, Prompts& prompts) {
  if (!IsLocked(file)) return true;
  if (prompts.Ask("The output file is locked.\r\nWould you like to unlock it now?") != Answer::kYes) return false;
  const auto unlocked = Unlock(file);
  if (!unlocked) return unlocked.error();
  return true;
}

}  // namespace quillcast::platform
