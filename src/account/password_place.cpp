#include "account/password_place.h"

#include <fmt/format.h>

#include "account/account_connection.h"
#include "platform/text.h"

namespace quillcast::account {

using enum AccountKey;

namespace {
constexpr std::string_view kAt = " at ";
}  // namespace

PasswordPlace PlaceOfPassword(const AccountSettings& account) {
  const std::string& stored = account[kPasswordFrom];
  if (stored == "Keyring") return PasswordPlace::kKeyring;
  return stored == "Command" ? PasswordPlace::kCommand : PasswordPlace::kSettings;
}

std::string HostsOf(const AccountSettings& account) {
  const auto servers = ServersOf(account);
  if (!servers) return platform::AsciiLower(platform::Trim(account[kServer]));
  std::string hosts;
  for (const auto& server : *servers) hosts += (hosts.empty() ? "" : ";") + platform::AsciiLower(server.host);
  return hosts;
}

std::string WhomOf(const AccountSettings& account) {
  return fmt::format("{}{}{}", account[kUsername], kAt, HostsOf(account));
}

std::optional<Whom> WhomNamedBy(std::string_view text) {
  const auto at = text.rfind(kAt);  // no host has a blank
  if (at == std::string_view::npos) return {};
  return Whom{std::string(text.substr(0, at)), std::string(text.substr(at + kAt.size()))};
}

bool KeyringLacks(const AccountSettings& account, std::string_view kept_for) {
  return account.IsOn(kAuth) && PlaceOfPassword(account) == PasswordPlace::kKeyring && account[kPassword].empty() &&
         WhomOf(account) != kept_for;
}

Sentence WaitForPasswordText(const AccountSettings& account) {
  const PasswordPlace place = PlaceOfPassword(account);
  if (!account.IsOn(kAuth) || place == PasswordPlace::kSettings) return "";
  if (place == PasswordPlace::kCommand) return "Waiting for the password command…";
  return account[kPassword].empty() ? "Asking the keyring for the password…" : "";
}

Sentence NoPasswordInKeyring(const AccountSettings& account) {
  return Say("The keyring has no password for {}.", platform::Printable(WhomOf(account), 200));
}

Sentence PasswordPlaceText(const AccountSettings& account, std::string_view kept_for) {
  switch (PlaceOfPassword(account)) {
    case PasswordPlace::kSettings:
      break;
    case PasswordPlace::kKeyring:
      if (KeyringLacks(account, kept_for))
        return Say("the keyring has none for {}", platform::Printable(WhomOf(account), 200));
      return account[kPassword].empty() ? "in the keyring" : "goes into the keyring when this is saved";
    case PasswordPlace::kCommand:
      return "what the command prints";
  }
  return "";
}

}  // namespace quillcast::account
