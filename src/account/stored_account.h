// The account and what the keyring has of it: read as they stood at one moment, written at once, by one at a time.
#pragma once

#include <chrono>

#include "account/account_settings.h"
#include "account/keyring_note.h"
#include "platform/cancel.h"
#include "platform/folder_lock.h"
#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::account {

struct StoredAccount {
  AccountSettings account;
  KeyringNote note;
};

Result<StoredAccount> LoadStored(const profile::SettingsStore& settings);
// Every key of the account, and the note; all or nothing.
Result<void> SaveStored(const StoredAccount& stored, profile::SettingsStore& settings);

// How long one waits for another who saves the account.
inline constexpr std::chrono::milliseconds kOthersPatience{10'000};

// Held by whoever changes the account, from before reading what is changed until it is written: no program and no other
// window does so meanwhile. kTryAgain where somebody else has it for longer than that, or after a cancel.
Result<platform::FolderLock> LockAccount(const profile::SettingsStore& settings, std::chrono::milliseconds patience,
                                         const platform::CancelToken& cancel);

}  // namespace quillcast::account
