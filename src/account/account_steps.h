// What the account dialog's buttons do beyond its values: save and tell the main window, reset, browse, test.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "account/account_secrets.h"
#include "account/account_settings.h"
#include "platform/cancel.h"
#include "platform/clock.h"
#include "platform/prompts.h"
#include "profile/settings_store.h"
#include "smtp/outcome.h"

namespace quillcast::account {

// What the main window shows of the account.
struct SenderTexts {
  std::string from;    // "Ada <ada@example.org>"
  std::string method;  // "Personal Sending" after saving; the stored short text after a reset, as at the start
};

// After the account was saved.
SenderTexts TextsOf(const AccountSettings& saved);

// Whether the person wants every setting of the account deleted, which AccountSecrets::Reset does then.
bool AgreesToReset(platform::Prompts& prompts);
// After that, read anew.
Result<SenderTexts> TextsAfterReset(const profile::SettingsStore& store);

// Lets a folder be picked as the queue folder: its path, ending in the separator. Cancelling leaves what is there.
void PickQueueFolder(AccountSettings& shown, platform::Prompts& prompts);

// `log` has the connection's lines as JobSource::LogLine tells them, secrets masked.
struct AccountTest {
  std::string text;       // what the box shows: an information box when it works, else a warning
  smtp::Outcome outcome;  // its code, and what the server and the client say about it
  std::vector<std::string> log;

  bool Works() const { return outcome.code == smtp::ResultCode::kSuccess; }
};

// Tries the values given, stored or not, on a fresh client: one connection, with TLS and sign-in as they say, no
// message. Values that describe no connection, and a password that cannot be had, give code 1 with the reason.
AccountTest TestAccount(const AccountSettings& shown, const AccountSecrets& secrets, const platform::Clock& clock,
                        const platform::CancelToken& cancel);

}  // namespace quillcast::account
