#include "app/folders.h"

namespace quillcast::app {
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

}  // namespace

Folders ResolveFolders(const platform::Environment& environment, const fs::path& executable,
                       const std::optional<fs::path>& profile) {
  Folders folders;
  const auto named = environment.Get("QUILLCAST_PROGRAM_FOLDER");
  folders.program = named ? fs::path(*named) : InstalledFolder(executable);
  folders.program_is_installed = !named;

  if (profile) {
    // One profile has one path, however it was written: a second window looks for the first by it. Where the current
    // folder is gone the path stays as it is, and making it tells the failure.
    std::error_code failed;
    fs::path root = fs::weakly_canonical(fs::absolute(*profile, failed), failed);
    if (failed) root = *profile;
    folders.data = root / "data" / "";
    folders.settings = root / "settings.db";
    folders.temporary = root / "Temp";
    return folders;
  }
  const auto data = HomeOf(environment, "XDG_DATA_HOME", ".local/share");
  folders.data = (data ? OurFolder(*data) : folders.program / "Application Data") / "";
  const auto config = HomeOf(environment, "XDG_CONFIG_HOME", ".config");
  folders.settings = (config ? OurFolder(*config) : folders.data) / "settings.db";
  const auto cache = HomeOf(environment, "XDG_CACHE_HOME", ".cache");
  const auto temp = environment.Get("Temp");
  folders.temporary = temp ? fs::path(*temp) : (cache ? OurFolder(*cache) : folders.data) / "Temp";
  return folders;
}

}  // namespace quillcast::app
