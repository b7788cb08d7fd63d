// Where a run works: the folders and stores of one profile, and the ports.
#pragma once

#include <chrono>

#include "account/account_secrets.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "platform/sqlite.h"
#include "profile/folders.h"
#include "profile/program.h"
#include "profile/settings_store.h"
#include "recipients/recipient_store.h"

namespace quillcast::run {

// All of it must outlive what is prepared there.
struct RunPlace {
  const profile::Folders& folders;
  const platform::Clock& clock;
  platform::Entropy& entropy;
  const platform::CancelToken& cancel;                                       // ends every wait and look, and the run
  platform::SecretStore& keyring;                                            // where the account's password may be
  std::chrono::milliseconds lock_wait = platform::LockPatience{}.lock_wait;  // for a store that others hold

  profile::SettingsStore Settings() const { return profile::SettingsStore(folders.settings, Patience()); }
  account::AccountSecrets Secrets() const { return {keyring, folders.settings}; }
  recipients::RecipientStore Recipients() const { return recipients::RecipientStore(folders.Database(), Patience()); }

 private:
  platform::LockPatience Patience() const { return {.lock_wait = lock_wait, .cancel = &cancel}; }
};

// The place of a program with windows: for work beside them, and with profile::kWindowPatience for the window itself.
inline RunPlace PlaceOf(const profile::Program& program, const platform::CancelToken& cancel,
                        const platform::LockPatience& patience = {}) {
  return {program.folders, program.clock, program.entropy, cancel, program.keyring, patience.lock_wait};
}

}  // namespace quillcast::run
