// What every command is given: the options that stand before it, the folders, and the ports.
#pragma once

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <string>

#include "cli/output.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/entropy.h"
#include "platform/environment.h"
#include "platform/prompts.h"
#include "platform/secret_store.h"
#include "platform/session_log.h"
#include "profile/folders.h"
#include "profile/settings_store.h"

namespace quillcast::cli {

// One for each command line. A command leaves its exit code in it and changes nothing else.
struct Context {
  Output& output;
  platform::Prompts& prompts;
  platform::Clock& clock;
  platform::Entropy& entropy;
  platform::Environment& environment;
  platform::CancelToken& cancel;
  platform::SecretStore& keyring;
  std::filesystem::path executable;
  std::optional<std::filesystem::path> profile;
  bool may_ask = true;      // false with --no-input, and when standard input is no terminal
  bool assume_yes = false;  // --yes
  int exit_code = 0;        // set by the command that ran

  // Only where they are; nothing is made.
  profile::Folders Folders() const { return profile::ResolveFolders(environment, executable, profile); }
  // The folders, made ready as at the start of the program: created where missing, with a working Group.mdb.
  Result<profile::Folders> PreparedFolders() const;
};

// Gives a command its action: what it returns becomes the exit code.
template <typename Action>
void OnRun(CLI::App& command, Context& context, Action action) {
  command.callback([&context, action] {
    const platform::SessionLog log(context.Folders().data, context.clock);
    context.exit_code = action(context);
  });
}

}  // namespace quillcast::cli
