#include "account/import/account_import.h"

#include <algorithm>

#include "account/account_connection.h"
#include "account/password_place.h"
#include "platform/text.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

struct NewValue {
  AccountKey key;
  std::string value;
};

// Deliberate: the port is that of the key's fallback, not the source's.
std::vector<NewValue> ValuesOf(const FoundAccount& account, const TakenBeside& beside, const AccountSettings& before) {
  const bool takes_port = beside.port && !account.port.empty();
  std::vector<NewValue> values = {{kName, account.name},
                                  {kEmail, account.email},
                                  {kServer, account.server},
                                  {kPort, takes_port ? account.port : std::string(RowOf(kPort).fallback)}};
  if (beside.security && !account.security.empty()) values.push_back({kSecurity, account.security});
  const bool takes_user = beside.user_name && !account.user_name.empty();
  const bool same_sign_in = (!takes_user || account.user_name == before[kUsername]) &&
                            platform::EqualsIgnoringAsciiCase(account.server, before[kServer]);
  if (takes_user) {
    values.push_back({kAuth, "1"});
    values.push_back({kUsername, account.user_name});
    if (!same_sign_in) values.push_back({kPassword, ""});
  }
  // A command gives its password to whoever is asked for one.
  if (!same_sign_in && PlaceOfPassword(before) == PasswordPlace::kCommand)
    values.push_back({kPasswordFrom, std::string(RowOf(kPasswordFrom).fallback)});
  return values;
}

}  // namespace

Result<std::vector<AccountKey>> ImportAccount(profile::SettingsStore& store, const FoundAccount& account,
                                              const TakenBeside& beside, std::chrono::milliseconds patience,
                                              const platform::CancelToken& cancel) {
  const auto lock = LockAccount(store, patience, cancel);
  if (!lock) return lock.error();
  const auto before = AccountSettings::Load(store);
  if (!before) return before.error();
  std::vector<profile::SettingValue> written;
  std::vector<AccountKey> keys;
  const auto values = ValuesOf(account, beside, *before);
  AccountSettings taken = *before;
  for (const NewValue& value : values) taken.Set(value.key, value.value);
  const auto servers = ServersOf(taken);  // other programs take more for one than a run could use
  if (!servers) return servers.error();
  for (const NewValue& value : values) {
    written.push_back({RowOf(value.key).name, value.value});
    keys.push_back(value.key);
  }
  const auto saved = store.WriteAll(kAccountSection, written);
  if (!saved) return saved.error();
  return keys;
}

Result<FoundAccount> ChooseAccount(std::span<const FoundAccount> accounts, std::string_view number_or_name) {
  const auto count = static_cast<std::int64_t>(accounts.size());
  if (const auto number = platform::WholeNumberBetween(number_or_name, 1, count))
    return accounts[static_cast<std::size_t>(*number - 1)];
  const auto has_name = [&](const FoundAccount& account) { return account.account_name == number_or_name; };
  const auto with_name = std::count_if(accounts.begin(), accounts.end(), has_name);
  if (with_name == 1) return *std::find_if(accounts.begin(), accounts.end(), has_name);
  const std::string shown = platform::Printable(number_or_name, 80);
  if (with_name > 1) {
    return Error{Failure::kUsage, Say("{} accounts are called \"{}\".", NumberValue(with_name), shown),
                 kNoSuchFoundAccountRemedy};
  }
  return Error{Failure::kUsage, Say("No account found has the number or the name \"{}\".", shown),
               kNoSuchFoundAccountRemedy};
}

std::string SenderOf(const FoundAccount& account) { return account.name + " <" + account.email + ">"; }

Sentence PasswordAfterImport(const AccountSettings& saved, std::span<const AccountKey> written,
                             std::string_view kept_for) {
  const auto was_written = [&](AccountKey key) {
    return std::find(written.begin(), written.end(), key) != written.end();
  };
  if (!saved.IsOn(kAuth) || !saved[kPassword].empty()) return "";
  if (PlaceOfPassword(saved) == PasswordPlace::kKeyring) {
    if (!KeyringLacks(saved, kept_for)) return "";
    return Say("{} {}", NoPasswordInKeyring(saved), kGivePassword);
  }
  if (was_written(kPasswordFrom))
    return "The password command of before is not asked for this account. Give its password, which the settings then "
           "have, or a command of its own.";
  if (was_written(kPassword)) return "Type its password: that of the server or user before is not kept.";
  return "The password is not taken over. Give it.";
}

Sentence ServerOf(const FoundAccount& account) {
  Sentence text = account.server;
  if (!account.port.empty()) text = Say("{}, port {}", text, account.port);
  if (!account.security.empty()) text = Say("{}, security {}", text, account.security);
  if (!account.user_name.empty()) text = Say("{}, user {}", text, account.user_name);
  return text;
}

}  // namespace quillcast::account
