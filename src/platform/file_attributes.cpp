#include "platform/file_attributes.h"

#include <fmt/format.h>
#include <sys/stat.h>

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

Sentence LeftLocked(const fs::path& file) { return Say("{} is locked and was left as it is.", file.string()); }

Result<void> ReplaceChosenFile(const fs::path& path, const std::function<Result<void>(int fd)>& write) {
  std::error_code failed;
  const fs::path target = fs::is_symlink(path, failed) ? fs::canonical(path, failed) : path;
  if (target.empty()) return SystemError("write", path, failed.value());
  const auto before = fs::status(target, failed);
  if (fs::is_other(before)) {
    return Error{Failure::kCannotCreate, Say("Cannot write {}: it is a device or a pipe.", path.string()),
                 "Name an ordinary file."};
  }
  return ReplaceFile(target, [&](int fd) {
    auto written = write(fd);
    if (fs::is_regular_file(before)) {
      // A file system that refuses has no permissions to keep.
      IgnoreErrors(::fchmod(fd, static_cast<mode_t>(before.permissions())));
    }
    return written;
  });
}

Result<void> ReplaceChosenFile(const fs::path& path, std::string_view content) {
  return ReplaceChosenFile(path, [&](int fd) { return WriteAll(fd, path, content); });
}

}  // namespace quillcast::platform
