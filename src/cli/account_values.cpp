#include "cli/account_values.h"

#include <fmt/format.h>

#include <algorithm>

#include "cli/secret_input.h"
#include "platform/text.h"

namespace quillcast::cli {
namespace {

using account::AccountKey;
using account::AccountKeyRow;
using account::AccountSettings;

Result<void> CheckChoice(const AccountKeyRow& row, std::string_view value) {
  if (row.choices.empty() || std::find(row.choices.begin(), row.choices.end(), value) != row.choices.end()) return {};
  return Error{Failure::kUsage, Say("{} cannot be \"{}\".", row.name, platform::Printable(value, 80)),
               Say("It is one of: {}.", fmt::to_string(fmt::join(row.choices, ", ")))};
}

Result<void> Assign(GivenAccount& values, const std::string& assignment) {
  const auto equals = assignment.find('=');
  const AccountKeyRow* row = account::FindAccountKey(assignment.substr(0, equals));
  if (equals == std::string::npos || row == nullptr) {
    std::string keys;
    for (const auto& known : account::AccountKeyRows())
      keys += fmt::format("{}{}", keys.empty() ? "" : ", ", known.name);
    return Error{Failure::kUsage, Say("\"{}\" is no setting of the account.", platform::Printable(assignment, 80)),
                 Say("Write KEY=VALUE with one of: {}.", keys)};
  }
  if (row->key == AccountKey::kPassword) {
    return Error{Failure::kUsage, "A password must not stand on the command line, where others can read it.",
                 "Use --password-file FILE, or leave it out to be asked."};
  }
  std::string value = assignment.substr(equals + 1);
  auto choice = CheckChoice(*row, value);
  if (!choice) return choice;
  values.account.Set(row->key, std::move(value));
  values.given.push_back(row->key);
  return {};
}

Result<void> TakePassword(AccountSettings& account, const std::string& file, bool may_ask) {
  const bool needed = account.IsOn(AccountKey::kAuth) && account[AccountKey::kPassword].empty();
  if (file.empty() && !(needed && may_ask)) return {};
  auto password = file.empty() ? SecretFromTerminal("Password") : SecretFromFile(file);
  if (!password) return password.error();
  account.Set(AccountKey::kPassword, std::move(*password));
  return {};
}

}  // namespace

void AddAccountValueOptions(CLI::App& command, AccountValueOptions& options) {
  command.add_option("settings", options.assignments, "KEY=VALUE, as many as you like; see account show");
  command.add_option("--password-file", options.password_file, "Take the password from the first line of this file")
      ->type_name("FILE");
}

Result<GivenAccount> AccountWith(const AccountValueOptions& options, const profile::SettingsStore& settings,
                                 const Context& context) {
  auto stored = AccountSettings::Load(settings);
  if (!stored) return stored.error();
  GivenAccount values{std::move(*stored), {}};
  for (const auto& assignment : options.assignments) {
    const auto assigned = Assign(values, assignment);
    if (!assigned) return assigned.error();
  }
  const auto taken = TakePassword(values.account, options.password_file, context.may_ask);
  if (!taken) return taken.error();
  return values;
}

}  // namespace quillcast::cli
