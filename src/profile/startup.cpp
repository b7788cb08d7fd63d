#include "profile/startup.h"

#include <fmt/format.h>

#include <array>

#include "platform/file.h"
#include "platform/file_attributes.h"

namespace quillcast::profile {
namespace {

namespace fs = std::filesystem;

constexpr PixelSize kSmallestScreen{800, 600};

using Check = std::optional<Refusal> (*)(const StartupFacts&, const Folders&);

std::optional<Refusal> RefuseSecondWindow(const StartupFacts& facts, const Folders&) {
  if (!facts.window_with_our_title) return {};
  return Refusal{.message = {}, .flash_other_window = true};
}

std::optional<Refusal> RefuseSecondInstance(const StartupFacts& facts, const Folders&) {
  if (!facts.other_instance) return {};
  return Refusal{};
}

std::optional<Refusal> RefuseWindowsVersion(const StartupFacts& facts, const Folders&) {
  const std::string_view name = GetWinVer(facts.version);
  if (name == "Windows 95" || name == "Windows NT 3.51") {
    return Refusal{fmt::format("This program cannot be run in {}. Quillcast will now close.", name)};
  }
  if (name == "Unknown Windows") return Refusal{"Unable to detect the Windows version. Quillcast will now close."};
  return {};
}

std::optional<Refusal> RefuseSmallScreen(const StartupFacts& facts, const Folders&) {
  if (!facts.screen) return {};
  if (facts.screen->width >= kSmallestScreen.width && facts.screen->height >= kSmallestScreen.height) return {};
  return Refusal{"The screen resolution is not adequate for running Quillcast."};
}

std::optional<Refusal> RefuseMissingTemplate(const StartupFacts&, const Folders& folders) {
  if (fs::exists(folders.DatabaseTemplate(), IgnoreErrors())) return {};
  return Refusal{
      "Quillcast has failed to start because Group.mdb was not found.\r\n"
      "Re-installing the application may fix this problem."};
}

constexpr auto kChecks = std::to_array<Check>(
    {RefuseSecondWindow, RefuseSecondInstance, RefuseWindowsVersion, RefuseSmallScreen, RefuseMissingTemplate});

}  // namespace

std::optional<Refusal> CheckStartup(const StartupFacts& facts, const Folders& folders) {
  for (const Check check : kChecks) {
    if (auto refusal = check(facts, folders)) return refusal;
  }
  return {};
}

Result<void> PrepareFolders(const Folders& folders) {
  // An installation medium may have left a read-only mark; where it is not ours to take off it does no harm either.
  IgnoreErrors(platform::Unlock(folders.DatabaseTemplate()));
  if (auto made = platform::EnsureFolder(folders.data); !made) return made;
  // Several starts may come to this at once, and a link may lead to a disk that is away.
  if (const auto copied = platform::CopyFileIfAbsent(folders.DatabaseTemplate(), folders.Database()); !copied) {
    return copied.error();
  }
  // Neither the store nor the history needs this one; what does tells of it.
  IgnoreErrors(platform::EnsureFolder(folders.temporary));
  return platform::EnsureFolder(folders.History());
}

VersionRecord RunningSystem() { return {.platform = 2, .major = 10, .minor = 0, .product_type = 1}; }

}  // namespace quillcast::profile
