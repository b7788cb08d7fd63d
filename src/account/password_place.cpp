#include "account/password_place.h"

namespace quillcast::account {

PasswordPlace PlaceOfPassword(const AccountSettings& account) {
  const std::string& stored = account[AccountKey::kPasswordFrom];
  if (stored == "Keyring") return PasswordPlace::kKeyring;
  return stored == "Command" ? PasswordPlace::kCommand : PasswordPlace::kSettings;
}

Sentence PasswordPlaceText(const AccountSettings& account) {
  switch (PlaceOfPassword(account)) {
    case PasswordPlace::kSettings:
      break;
    case PasswordPlace::kKeyring:
      return account[AccountKey::kPassword].empty() ? "in the keyring" : "goes into the keyring when this is saved";
    case PasswordPlace::kCommand:
      return "what the command prints";
  }
  return "";
}

}  // namespace quillcast::account
