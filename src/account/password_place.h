// Where the account's password is.
#pragma once

#include "account/account_settings.h"

namespace quillcast::account {

// In the order of the choices of PasswordFrom. kKeyring: a password beside it in the settings is one that goes into the
// keyring when they are saved. kCommand: what a command prints.
enum class PasswordPlace { kSettings, kKeyring, kCommand };

// kSettings for a stored text that is none of the choices; ChosenAs tells those.
PasswordPlace PlaceOfPassword(const AccountSettings& account);

// Where it is, for a person; empty where it stands in its own box.
Sentence PasswordPlaceText(const AccountSettings& account);

}  // namespace quillcast::account
