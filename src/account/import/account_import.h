// Takes an account that another program keeps over into our own settings.
#pragma once

#include <chrono>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "account/account_settings.h"
#include "account/import/found_account.h"
#include "account/stored_account.h"
#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::account {

// What a person may want beside name, address and server. Of what the source does not have, none is taken.
struct TakenBeside {
  bool port = false;
  bool security = false;
  bool user_name = false;
};

// The keys that were written, all or none: Name, Email, Server and Port, which is "25" whatever the source has unless
// it was asked for; Security; Auth and Username together, and Password, empty, where another user or server was
// named before, whose it was; PasswordFrom, back to the settings, where a command gave the password of such another. A
// password is never read anywhere. kTryAgain where somebody else saves the account for longer than `patience`; as
// ServersOf for a server that is none.
Result<std::vector<AccountKey>> ImportAccount(profile::SettingsStore& store, const FoundAccount& account,
                                              const TakenBeside& beside,
                                              std::chrono::milliseconds patience = kOthersPatience,
                                              const platform::CancelToken& cancel = platform::CancelToken());

// What the person has to do about the password of the account as it now is, and where it goes; empty for nothing.
Sentence PasswordAfterImport(const AccountSettings& saved, std::span<const AccountKey> written,
                             std::string_view kept_for);

inline constexpr const char* kNoSuchFoundAccountRemedy = "Choose one of those that are listed, by its number.";

// The account of this number, counted from 1, or else of this name. kUsage, with what there is, where there is none, or
// where several have the name.
Result<FoundAccount> ChooseAccount(std::span<const FoundAccount> accounts, std::string_view number_or_name);

// One line for a person: "Ada <ada@example.org>".
std::string SenderOf(const FoundAccount& account);
// "mail.example.org, port 587, STARTTLS, user ada"; without what is not known.
Sentence ServerOf(const FoundAccount& account);

}  // namespace quillcast::account
