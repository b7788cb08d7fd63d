#include "cli/account_values.h"

#include <fmt/format.h>

#include <algorithm>

#include "account/password_place.h"
#include "cli/secret_input.h"
#include "platform/text.h"
#include "run/pace/pace_rules.h"

namespace quillcast::cli {
namespace {

using account::AccountKey;
using account::AccountKeyRow;
using account::AccountSettings;
using account::PasswordPlace;

// As it is stored. A switch is written as options write it, too; an empty one, as any pace, is what it is by itself.
Result<std::string> StoredAs(const AccountKeyRow& row, std::string value) {
  const bool is_switch = account::KindOf(row) == account::AccountKeyKind::kSwitch;
  if (const auto on = run::ReadSwitch(value); is_switch && on) {
    return std::string(*on ? (**on ? "1" : "0") : row.fallback);
  }
  if (row.choices.empty() || std::find(row.choices.begin(), row.choices.end(), value) != row.choices.end())
    return value;
  return Error{Failure::kUsage, Say("{} cannot be \"{}\".", row.name, platform::Printable(value, 80)),
               Say("It is one of: {}{}.", fmt::to_string(fmt::join(row.choices, ", ")), is_switch ? ", no, yes" : "")};
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
  auto value = StoredAs(*row, assignment.substr(equals + 1));
  if (!value) return value.error();
  values.account.Set(row->key, *std::move(value));
  values.given.push_back(row->key);
  return {};
}

// As the settings that they are.
Result<void> AssignPlace(GivenAccount& values, const AccountValueOptions& options) {
  const std::string& command = options.password_command;
  const std::string place = options.password_from.empty() && !command.empty() ? "Command" : options.password_from;
  auto assigned = place.empty() ? Result<void>() : Assign(values, "PasswordFrom=" + place);
  return assigned && !command.empty() ? Assign(values, "PasswordCommand=" + command) : assigned;
}

// Whether the account signs in with a password that nobody has given yet.
bool LacksPassword(const AccountSettings& account, std::string_view kept_for) {
  if (!account.IsOn(AccountKey::kAuth) || !account[AccountKey::kPassword].empty()) return false;
  return account::PlaceOfPassword(account) == PasswordPlace::kSettings || account::KeyringLacks(account, kept_for);
}

Result<void> TakePassword(GivenAccount& values, const std::string& file, bool may_ask) {
  AccountSettings& account = values.account;
  if (file.empty() && !(may_ask && LacksPassword(account, values.stored.note.kept_for))) return {};
  if (account::PlaceOfPassword(account) == PasswordPlace::kCommand) {
    return Error{Failure::kUsage, "The account takes its password from a command, so none out of a file is kept.",
                 "Leave --password-file out, or choose another place: --password-from Settings or Keyring."};
  }
  auto password = file.empty() ? SecretFromTerminal("Password") : SecretFromFile(file);
  if (!password) return password.error();
  account.Set(AccountKey::kPassword, std::move(*password));
  values.has_password = true;
  return {};
}

}  // namespace

void AddAccountValueOptions(CLI::App& command, AccountValueOptions& options) {
  command.add_option("settings", options.assignments, "KEY=VALUE, as many as you like; see account show");
  command.add_option("--password-file", options.password_file, "Take the password from the first line of this file")
      ->type_name("FILE");
  command
      .add_option("--password-from", options.password_from,
                  "Where the password is: Settings, Keyring (it is moved there) or Command")
      ->type_name("PLACE");
  command
      .add_option("--password-command", options.password_command,
                  "Take the password from the first line that this prints each time, run by sh -c")
      ->type_name("COMMAND");
}

account::AccountChange GivenAccount::Change() const {
  account::AccountChange change(stored.account, account);
  for (const AccountKey key : given) change.Include(key);
  if (has_password) change.Include(AccountKey::kPassword);
  return change;
}

Result<GivenAccount> AccountWith(const AccountValueOptions& options, const profile::SettingsStore& settings,
                                 const Context& context) {
  auto stored = account::LoadStored(settings);
  if (!stored) return stored.error();
  GivenAccount values{*stored, stored->account, {}};
  for (const auto& assignment : options.assignments) {
    const auto assigned = Assign(values, assignment);
    if (!assigned) return assigned.error();
  }
  const auto assigned = AssignPlace(values, options);
  if (!assigned) return assigned.error();
  const auto taken = TakePassword(values, options.password_file, context.may_ask);
  if (!taken) return taken.error();
  return values;
}

}  // namespace quillcast::cli
