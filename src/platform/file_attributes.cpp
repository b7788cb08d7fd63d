#include "platform/file_attributes.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>

#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::platform {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestName = 200;  // bytes of a file's name, where it is told
constexpr const char* kHowToUnlock = "Browse for it to have it unlocked.";

// Beside a database, while it is written.
constexpr std::array<const char*, 4> kCompanions = {"", "-journal", "-wal", "-shm"};

fs::path OnePath(const fs::path& path) {
  std::error_code failed;
  fs::path one = fs::weakly_canonical(fs::absolute(path, failed), failed);
  return failed ? path : one;
}

bool IsWithin(const fs::path& path, const fs::path& folder) {
  const auto [in_path, in_folder] = std::mismatch(path.begin(), path.end(), folder.begin(), folder.end());
  // A folder that is written with a separator at its end has an empty part there.
  return in_folder == folder.end() || (in_folder->empty() && in_path != path.end());
}

bool IsOrIsWithin(const fs::path& path, const fs::path& kept) {
  if (kept.empty()) return false;
  return std::any_of(kCompanions.begin(), kCompanions.end(), [&](const char* companion) {
    const fs::path own = kept.string() + companion;
    // A hard link to a file that is kept is told by its device and number; one to any other file in a kept folder is
    // not.
    return IsWithin(path, OnePath(own)) || fs::equivalent(path, own, IgnoreErrors());
  });
}

bool IsAmong(const fs::path& path, const std::vector<fs::path>& files) {
  return std::any_of(files.begin(), files.end(), [&](const fs::path& file) { return IsOrIsWithin(path, file); });
}

Result<void> CheckLeadsSomewhere(const fs::path& path) {
  std::error_code failed;
  if (!fs::is_symlink(path, failed) || fs::status(path, failed).type() != fs::file_type::not_found) return {};
  return Error{Failure::kCannotCreate,
               Say("Cannot write {}: it is a link to {}, and nothing is there.", path.string(),
                   Printable(fs::read_symlink(path, failed).string(), kLongestName)),
               "Name another file, or put one where the link leads."};
}

}  // namespace

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

Result<void> CheckIsNotOwn(const fs::path& path, const OwnFiles& own) {
  const fs::path one = OnePath(path);
  if (!IsAmong(one, own.kept) || IsAmong(one, own.free)) return {};
  return Error{Failure::kNotPermitted, Say("Cannot write {}: the program keeps its own files there.", path.string()),
               "Name another file."};
}

std::vector<std::string> OwnNamesIn(const fs::path& folder, const OwnFiles& own) {
  std::vector<std::string> names;
  const fs::path one = OnePath(folder);
  if (IsAmong(one, own.free)) return names;
  for (const fs::path& kept : own.kept) {
    for (const char* companion : kCompanions) {
      const fs::path file = OnePath(kept.string() + companion);
      if (!kept.empty() && file.parent_path() == one) names.push_back(file.filename().string());
    }
  }
  return names;
}

Result<bool> MayWriteTo(const fs::path& file, const OwnFiles& own, Prompts& prompts) {
  if (auto other = CheckIsNotOwn(file, own); !other) return other.error();
  return AskToUnlock(file, prompts);
}

Result<bool> AskToUnlock(const fs::path& file, Prompts& prompts) {
  if (!IsLocked(file)) return true;
  if (prompts.Ask("The output file is locked.\r\nWould you like to unlock it now?") != Answer::kYes) return false;
  const auto unlocked = Unlock(file);
  if (!unlocked) return unlocked.error();
  return true;
}

Sentence LeftLocked(const fs::path& file) { return Say("{} is locked and was left as it is.", file.string()); }

Result<std::optional<Sentence>> DescribeTarget(const fs::path& file, const OwnFiles& own) {
  std::error_code failed;
  if (auto somewhere = CheckLeadsSomewhere(file); !somewhere) return somewhere.error();
  if (!fs::is_regular_file(file, failed)) return std::optional<Sentence>();
  if (auto other = CheckIsNotOwn(file, own); !other) return other.error();
  if (IsLocked(file)) return Error{Failure::kNotPermitted, Say("{} is locked.", file.string()), kHowToUnlock};
  const std::string name = Printable(file.filename().string(), kLongestName);
  if (!fs::is_symlink(file, failed)) return std::optional(Say("{} is there already; it will be replaced.", name));
  return std::optional(
      Say("{} is a link to {}; what is there will be replaced.", name, fs::canonical(file, failed).string()));
}

Error TargetIsLocked(const fs::path& file) { return {Failure::kNotPermitted, LeftLocked(file), kHowToUnlock}; }

Result<void> ReplaceChosenFile(const fs::path& path, const OwnFiles& own,
                               const std::function<Result<void>(int fd)>& write) {
  if (auto other = CheckIsNotOwn(path, own); !other) return other;
  if (auto somewhere = CheckLeadsSomewhere(path); !somewhere) return somewhere;
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

Result<void> ReplaceChosenFile(const fs::path& path, const OwnFiles& own, std::string_view content) {
  return ReplaceChosenFile(path, own, [&](int fd) { return WriteAll(fd, path, content); });
}

}  // namespace quillcast::platform
