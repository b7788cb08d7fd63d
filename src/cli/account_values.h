// KEY=VALUE arguments of the account commands: to be saved, or only to be tried.
#pragma once

#include <string>
#include <vector>

#include "account/account_change.h"
#include "account/account_settings.h"
#include "account/stored_account.h"
#include "cli/context.h"

namespace quillcast::cli {

// As they were typed; AccountWith looks at them.
struct AccountValueOptions {
  std::vector<std::string> assignments;
  std::string password_file;
  std::string password_from;
  std::string password_command;
};

// `options` must outlive the command, which fills it when the line is parsed.
void AddAccountValueOptions(CLI::App& command, AccountValueOptions& options);

// `given` has the keys of the line in their order, the password's not among them.
struct GivenAccount {
  account::StoredAccount stored;
  account::AccountSettings account;  // what is stored, with the given values in place
  std::vector<account::AccountKey> given;
  bool has_password = false;  // one that was given, or typed

  account::AccountChange Change() const;
};

// Fails with kUsage for an unknown key or a value that is none of its choices. The password comes from the file, or is
// asked for where sign-in needs one and none is known: one for the keyring where the account begins to take it from
// there. A command that is given is where it then comes from.
Result<GivenAccount> AccountWith(const AccountValueOptions& options, const profile::SettingsStore& settings,
                                 const Context& context);

}  // namespace quillcast::cli
