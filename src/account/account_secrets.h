// The account's password: the one way to it, and the ways in which it gets into the keyring and out of it.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "account/account_change.h"
#include "account/account_settings.h"
#include "account/stored_account.h"
#include "platform/cancel.h"
#include "platform/secret_store.h"
#include "profile/settings_store.h"
#include "smtp/client/client_options.h"

namespace quillcast::account {

// What was reset all the same, though the keyring still has the old password or may have it, and why.
struct SecretsLeft {
  std::optional<Error> in_keyring;
};

// The account as it now is, and the same of one that was saved.
struct SavedAccount {
  AccountSettings account;
  std::optional<Error> in_keyring;
};

// Belongs to one profile, whose entry in the keyring goes by the place of its settings, and by the server and the user
// that the password was kept for: nobody else is ever given it. What it is given must outlive it. Usable beside a
// window: everything that asks the keyring or runs a command may take a minute.
class AccountSecrets {
 public:
  // `patience` is that with a password command.
  AccountSecrets(platform::SecretStore& keyring, const std::filesystem::path& settings,
                 std::chrono::milliseconds patience = std::chrono::seconds(60));

  // From where PasswordFrom says, anew at each call: once a run. Empty where the account does not sign in. The command
  // is a line for sh(1), which knows "~", quotes and pipes as the person does who wrote it; the first line that it
  // prints is the password. Errors: kNotConfigured where there is none (no entry for this server and user, no command,
  // one that is not there); kUnavailable where the command failed or printed nothing; kBadData where it printed more
  // than 64 KiB, or what is no text; kTimedOut; kTryAgain after a cancel; those of the keyring.
  Result<platform::Secret> PasswordOf(const AccountSettings& account, const platform::CancelToken& cancel) const;
  // The connection that the account describes, ready to sign in.
  Result<smtp::ClientOptions> SignInOptionsOf(const AccountSettings& account,
                                              const platform::CancelToken& cancel) const;

  // Whether saving or resetting asks the keyring, and so may wait for a person.
  bool SavingAsksKeyring(const AccountSettings& account, const profile::SettingsStore& settings) const;
  bool ResettingAsksKeyring(const profile::SettingsStore& settings) const;

  // Changes the account as it is stored by then, one at a time among all programs; kTryAgain where another does so for
  // longer than ten seconds, or has changed it meanwhile so that the change does not go with it. A password that
  // belongs into the keyring is put there first and is stored nowhere else; where the keyring refuses it nothing is
  // saved, and where the settings cannot be written it is taken back: the error says what stayed as it was, and whether
  // a keyring that gave no answer may have taken it. One that a command gives is not stored. What the keyring has of
  // another server or user, or of an account that no longer takes it from there, is deleted last; that it cannot be is
  // told once.
  Result<SavedAccount> Save(const AccountChange& change, profile::SettingsStore& settings,
                            const platform::CancelToken& cancel) const;
  // Deletes every setting of the account, then what the keyring has of it.
  Result<SecretsLeft> Reset(profile::SettingsStore& settings, const platform::CancelToken& cancel) const;
  // The same for a window, which waits for nobody: nothing is done, and nothing comes back, where somebody else saves
  // the account just then or the keyring is to be asked.
  std::optional<Result<SavedAccount>> SaveAtOnce(const AccountChange& change, profile::SettingsStore& settings) const;
  std::optional<Result<SecretsLeft>> ResetAtOnce(profile::SettingsStore& settings) const;

 private:
  Result<platform::Secret> FromKeyring(const AccountSettings& account, const platform::CancelToken& cancel) const;
  Result<platform::Secret> FromCommand(const std::string& command, const platform::CancelToken& cancel) const;
  platform::SecretName NameOf(const AccountSettings& account) const;
  static bool Asks(const AccountSettings& account, const StoredAccount& stored);
  // These two while the account is locked.
  Result<SavedAccount> SaveLocked(const AccountChange& change, profile::SettingsStore& settings,
                                  const platform::CancelToken& cancel) const;
  Result<SecretsLeft> ResetLocked(profile::SettingsStore& settings, const platform::CancelToken& cancel) const;
  // What an entry had before another password took its place.
  struct KeptBefore {
    std::optional<platform::Secret> secret;
    bool is_unreadable = false;  // it had one that nobody knows
  };
  // `note` is the settings' of before, here and below.
  Result<KeptBefore> Keep(const AccountSettings& account, const KeyringNote& note, profile::SettingsStore& settings,
                          const platform::CancelToken& cancel) const;
  Error TakeBack(const AccountSettings& account, const KeptBefore& before, const KeyringNote& note,
                 profile::SettingsStore& settings, const Error& why) const;
  // What the keyring had before for this profile, but for what this account takes from it: what the note names, or also
  // what no note names any more.
  enum class Rest : std::uint8_t { kNoted, kAll };
  SecretsLeft ForgetRest(const AccountSettings& account, const StoredAccount& before, Rest rest,
                         profile::SettingsStore& settings, const platform::CancelToken& cancel) const;

  platform::SecretStore& keyring_;
  const std::string owner_;
  const std::chrono::milliseconds patience_;
};

}  // namespace quillcast::account
