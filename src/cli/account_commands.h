// The account's commands that have a file of their own.
#pragma once

#include <CLI/CLI.hpp>

#include "cli/context.h"
#include "profile/settings_store.h"

namespace quillcast::cli {

// account import
void AddAccountImport(CLI::App& account, Context& context);

// After the account was changed: where it names the practice mailbox no more, practice has ended, which gives back what
// it took of the account. Says so.
void EndPracticeWhereLeft(Context& context, profile::SettingsStore& settings);

}  // namespace quillcast::cli
