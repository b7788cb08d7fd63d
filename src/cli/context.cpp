#include "cli/context.h"

#include "profile/startup.h"

namespace quillcast::cli {

Result<profile::Folders> Context::PreparedFolders() const {
  profile::Folders folders = Folders();
  const profile::StartupFacts facts{.version = profile::RunningSystem(), .screen = {}};
  if (const auto refusal = profile::CheckStartup(facts, folders)) {
    return Error{Failure::kNoInput, refusal->message,
                 "It was looked for as " + folders.DatabaseTemplate().string() + "."};
  }
  auto prepared = profile::PrepareFolders(folders);
  if (!prepared) return prepared.error();
  auto settings = profile::SettingsStore(folders.settings).CheckFile();
  if (!settings) return settings.error();
  return folders;
}

}  // namespace quillcast::cli
