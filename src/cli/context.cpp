#include "cli/context.h"

#include "app/startup.h"

namespace quillcast::cli {

Result<app::Folders> Context::PreparedFolders() const {
  app::Folders folders = Folders();
  const app::StartupFacts facts{.version = app::RunningSystem(), .screen = {}};
  if (const auto refusal = app::CheckStartup(facts, folders)) {
    return Error{Failure::kNoInput, refusal->message,
                 "It was looked for as " + folders.DatabaseTemplate().string() + "."};
  }
  auto prepared = app::PrepareFolders(folders);
  if (!prepared) return prepared.error();
  auto settings = app::SettingsStore(folders.settings).CheckFile();
  if (!settings) return settings.error();
  return folders;
}

}  // namespace quillcast::cli
