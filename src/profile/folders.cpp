#include "profile/folders.h"

namespace quillcast::profile {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMaker = "Tarnwick";
constexpr const char* kProduct = "Quillcast Classic";

fs::path OurFolder(const fs::path& base) { return base / kMaker / kProduct; }

// <prefix>/bin/quillcast has its files in <prefix>/share/quillcast; a build tree has the same shape.
fs::path InstalledFolder(const fs::path& executable) {
  return executable.parent_path().parent_path() / "share" / "quillcast";
}

std::optional<fs::path> HomeOf(const platform::Environment& environment, const char* variable, const char* below_home) {
  // A relative path in these variables is to be ignored (XDG Base Directory Specification).
  if (const auto named = environment.Get(variable); named && fs::path(*named).is_absolute()) return fs::path(*named);
  if (const auto home = environment.Get("HOME")) return fs::path(*home) / below_home;
  return {};
}

// One place has one path, however it was written and whatever links lead to it: a second window looks for the first by
// it. Where that cannot be found out the path stays as it is, and making it tells the failure.
fs::path OnePath(const fs::path& path) {
  std::error_code failed;
  fs::path one = fs::weakly_canonical(fs::absolute(path, failed), failed);
  return failed ? path : one;
}

struct UserFolders {
  fs::path data;
  fs::path settings;
  fs::path temporary;
};

UserFolders FoldersOf(const platform::Environment& environment, const fs::path& program) {
  const auto data = HomeOf(environment, "XDG_DATA_HOME", ".local/share");
  const auto config = HomeOf(environment, "XDG_CONFIG_HOME", ".config");
  const auto cache = HomeOf(environment, "XDG_CACHE_HOME", ".cache");
  const auto temp = environment.Get("Temp");
  UserFolders user;
  user.data = data ? OurFolder(*data) : program / "Application Data";
  user.settings = config ? OurFolder(*config) : user.data;
  user.temporary = temp ? fs::path(*temp) : (cache ? OurFolder(*cache) : user.data) / "Temp";
  return user;
}

}  // namespace

Folders ResolveFolders(const platform::Environment& environment, const fs::path& executable,
                       const std::optional<fs::path>& profile) {
  Folders folders;
  const auto named = environment.Get("QUILLCAST_PROGRAM_FOLDER");
  folders.program = named ? fs::path(*named) : InstalledFolder(executable);
  folders.program_is_installed = !named;

  const UserFolders user =
      profile ? UserFolders{*profile / "data", *profile, *profile / "Temp"} : FoldersOf(environment, folders.program);
  folders.data = OnePath(user.data) / "";
  folders.settings = OnePath(user.settings) / "settings.db";
  folders.temporary = OnePath(user.temporary);
  return folders;
}

}  // namespace quillcast::profile
