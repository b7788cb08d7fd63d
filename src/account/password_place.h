// Where the account's password is, and for whom a keyring keeps it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "account/account_settings.h"

namespace quillcast::account {

// In the order of the choices of PasswordFrom. kKeyring: a password beside it in the settings is one that goes into the
// keyring when they are saved. kCommand: what a command prints.
enum class PasswordPlace { kSettings, kKeyring, kCommand };

// kSettings for a stored text that is none of the choices; ChosenAs tells those.
PasswordPlace PlaceOfPassword(const AccountSettings& account);

// The hosts of the account's servers, in small letters and with ";" between them: a port, and how the list is written,
// make no other servers of them.
std::string HostsOf(const AccountSettings& account);
// "ada at mail.example.org": to whom alone a password in the keyring is given.
std::string WhomOf(const AccountSettings& account);
struct Whom {
  std::string user, hosts;
};
// Of such a text; nothing for what an older version noted.
std::optional<Whom> WhomNamedBy(std::string_view text);
// Whether the account is to have its password from the keyring, which has it for another or none at all, while none is
// on its way there. `kept_for` is the note's.
bool KeyringLacks(const AccountSettings& account, std::string_view kept_for);

// What is waited for before the server is spoken to; empty where the password is at hand.
Sentence WaitForPasswordText(const AccountSettings& account);
// "The keyring has no password for ada at mail.example.org.", and what to do about it.
Sentence NoPasswordInKeyring(const AccountSettings& account);
inline constexpr const char* kGivePassword =
    "Give the account its password; it goes into the keyring when the account is saved.";
// Where it is, for a person; empty where it stands in its own box.
Sentence PasswordPlaceText(const AccountSettings& account, std::string_view kept_for);

}  // namespace quillcast::account
