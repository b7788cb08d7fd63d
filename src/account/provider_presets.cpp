#include "account/provider_presets.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/text.h"

namespace quillcast::account {
namespace {

constexpr std::string_view kAppPassword = "Sign in with an app password, made on the provider's security page.";

constexpr auto kPresets = std::to_array<ProviderPreset>({
    {"Gmail", "gmail.com googlemail.com", "smtp.gmail.com", "587", "STARTTLS", kAppPassword},
    {"Yahoo Mail", "yahoo.com yahoo.co.uk yahoo.de yahoo.fr ymail.com", "smtp.mail.yahoo.com", "465", "TLS",
     kAppPassword},
    {"iCloud Mail", "icloud.com me.com mac.com", "smtp.mail.me.com", "587", "STARTTLS", kAppPassword},
    {"AOL Mail", "aol.com", "smtp.aol.com", "465", "TLS", kAppPassword},
    {"Fastmail", "fastmail.com fastmail.fm", "smtp.fastmail.com", "465", "TLS", kAppPassword},
    {"GMX", "gmx.de gmx.at gmx.ch", "mail.gmx.net", "587", "STARTTLS",
     "Switch on POP3/IMAP in the mailbox's settings."},
    {"GMX", "gmx.com gmx.net", "mail.gmx.com", "587", "STARTTLS", "Switch on POP3/IMAP in the mailbox's settings."},
    {"WEB.DE", "web.de", "smtp.web.de", "587", "STARTTLS", "Switch on POP3/IMAP in the mailbox's settings."},
    {"T-Online", "t-online.de", "securesmtp.t-online.de", "465", "TLS", "Sign in with the password for mail programs."},
    {"Zoho Mail", "zoho.com zohomail.com", "smtp.zoho.com", "465", "TLS", kAppPassword},
    {"mailbox.org", "mailbox.org", "smtp.mailbox.org", "587", "STARTTLS", ""},
    {"Posteo", "posteo.de posteo.net", "posteo.de", "587", "STARTTLS", ""},
    {"Orange", "orange.fr wanadoo.fr", "smtp.orange.fr", "465", "TLS", ""},
    {"Free", "free.fr", "smtp.free.fr", "465", "TLS", ""},
    {"Yandex Mail", "yandex.com yandex.ru", "smtp.yandex.com", "465", "TLS", kAppPassword},
});

bool Serves(const ProviderPreset& preset, std::string_view domain) {
  const auto domains = platform::Split(preset.domains, ' ');
  return std::find(domains.begin(), domains.end(), domain) != domains.end();
}

}  // namespace

std::optional<ProviderPreset> PresetFor(std::string_view address) {
  const auto at = address.rfind('@');
  if (at == std::string_view::npos) return {};
  const std::string domain = platform::AsciiLower(platform::Trim(address.substr(at + 1)));
  const auto* const preset =
      std::find_if(kPresets.begin(), kPresets.end(), [&](const ProviderPreset& row) { return Serves(row, domain); });
  if (preset == kPresets.end()) return {};
  return *preset;
}

std::optional<ProviderPreset> PresetToOffer(const AccountSettings& shown) {
  auto preset = PresetFor(shown[AccountKey::kEmail]);
  if (preset && shown[AccountKey::kServer] == preset->server) return {};
  return preset;
}

AccountSettings FilledIn(AccountSettings shown, const ProviderPreset& preset) {
  shown.Set(AccountKey::kServer, std::string(preset.server));
  shown.Set(AccountKey::kPort, std::string(preset.port));
  shown.Set(AccountKey::kSecurity, std::string(preset.security));
  shown.Set(AccountKey::kAuth, "1");
  if (shown[AccountKey::kUsername].empty()) shown.Set(AccountKey::kUsername, shown[AccountKey::kEmail]);
  return shown;
}

}  // namespace quillcast::account
