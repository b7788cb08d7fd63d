// Which accounts other mail programs keep on this machine.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "account/import/found_account.h"
#include "platform/cancel.h"
#include "platform/environment.h"

namespace quillcast::account {

enum class MailProgram { kThunderbird, kEvolution, kClawsMail };

// A folder in which a program keeps its settings, where it is there.
struct AccountRoot {
  MailProgram program = MailProgram::kThunderbird;
  std::filesystem::path folder;
};

// All places where the programs keep their accounts below a person's home: their own, and those that they have when
// they come as Flatpak or Snap. `config` is where settings are, ".config" in the home where it is not given.
std::vector<AccountRoot> AccountRoots(const std::filesystem::path& home,
                                      const std::optional<std::filesystem::path>& config = std::nullopt);
// The same for whoever runs this: HOME and XDG_CONFIG_HOME, where that is an absolute path. None without a home.
std::vector<AccountRoot> AccountRoots(const platform::Environment& environment);

// The accounts in the order of the roots, then of their program. A place that two roots lead to is read once. Nothing
// fails: what cannot be read is among what was passed over. Reads files alone, none of them beyond a bound, and writes
// nothing. A request by `cancel` ends it with what was found so far.
FoundAccounts FindAccounts(std::span<const AccountRoot> roots, const platform::CancelToken& cancel);

}  // namespace quillcast::account
