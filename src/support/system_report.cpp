#include "support/system_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "account/account_settings.h"
#include "account/password_place.h"
#include "account/thread_modes.h"
#include "platform/text.h"
#include "profile/version.h"

namespace quillcast::support {
namespace {

using enum SecretPlace;

constexpr std::string_view kHidden = "***";

struct SettingRow {
  std::string_view section;
  std::string_view key;
  std::string_view fallback = {};  // of its readers; the account's own keys have theirs in its table
  SecretPlace place = kInAddress;
  std::string_view label = {};  // section and key where there is none
};

constexpr std::string_view kAccount = account::kAccountSection;
constexpr auto kSettings = std::to_array<SettingRow>({
    {kAccount, "Name"},
    {kAccount, "Email"},
    {kAccount, "Server", {}, kBeforeServer},
    {kAccount, "Port"},
    {kAccount, "Auth"},
    {kAccount, "Username"},
    {kAccount, "AuthMode"},
    {kAccount, "Pipeline"},
    {kAccount, "NoAuth"},
    {kAccount, "Boundary"},
    {kAccount, "Timeout"},
    {kAccount, "Method"},
    {kAccount, "ToField"},
    {kAccount, "BCCField"},
    {kAccount, "ThirdField"},
    {kAccount, "ThirdPath"},
    {kAccount, "HeaderEncoding"},
    {kAccount, "Encoding"},
    {kAccount, "AttachmentEncoding"},
    {kAccount, "CharSet"},
    {kAccount, "AutoWrap"},
    {kAccount, "Wrap", {}, kInAddress, "Account-WrapNumber"},
    {kAccount, "TextPart"},
    {kAccount, "Extended"},
    {kAccount, "DSNNotify"},
    {kAccount, "DSNReturn"},
    {"Advanced", "Reconnect"},
    {"Advanced", "Messages"},
    {"Advanced", "Pause"},
    {"Advanced", "Time"},
    {"Advanced", "CustomHeader"},
    {"Advanced", "CustomValue"},
    {"Advanced", "ReplyTo"},
    {"Advanced", "ReturnReceiptTo"},
    {"Advanced", "Domain", {}, kBeforeServer},
    {"Advanced", "DomainName", {}, kBeforeServer},
    {"Advanced", "Encoding", "MIME"},
    {"Advanced", "Event"},
    {"Advanced", "LocalIP"},
    {"Options", "Address", {}, kBeforeServer},
    {"Options", "Port"},
    {"Options", "Proxy", "0", kBeforeServer},
    {"Options", "Timeout", "1"},
    {"Options", "Tips", "1"},
});

// What other programs of the maker keep in the same store.
constexpr auto kMailSections = std::to_array<std::string_view>(
    {"Mail-Bounce", "Mail-Forwarder", "Mail-Responder", "Mail-SPAM", "Mail-Subscribe", "Mail-Unsubscribe"});
constexpr std::array<SettingRow, 4> RowsOfMail(std::string_view section) {
  return {
      {{section, "Authentication"}, {section, "Port"}, {section, "Server", {}, kBeforeServer}, {section, "Timeout"}}};
}

constexpr SettingRow RowOfThreads(std::string_view section) {
  return {section, "Mode", account::Name(account::ThreadMode::kSecond), kInAddress, section};
}

void AppendLine(std::string& report, std::string_view label, std::string_view value) {
  fmt::format_to(std::back_inserter(report), "{}{}\r\n", label, platform::Printable(value));
}

void AppendSystem(std::string& report, const SystemFacts& facts) {
  AppendLine(report, "---System Information---", {});
  AppendLine(report, "Operating System: ", facts.operating_system);
  AppendLine(report, "Registered to: ", facts.owner + " - " + facts.host);
  AppendLine(report, "Windows Directory: ", {});
  const auto& screen = facts.screen;
  AppendLine(report, "Screen Resolution: ", screen ? fmt::format("{}x{}", screen->width, screen->height) : "");
  report += "Available Drives:";
  for (const auto& drive : facts.drives) report += (&drive == &facts.drives.front() ? " " : ", ") + drive;
  report += "\r\n";
}

std::string_view FallbackOf(const SettingRow& row) {
  return row.section == kAccount ? account::FindAccountKey(row.key)->fallback : row.fallback;
}

struct Secrets {
  std::array<std::string_view, 2> known;
  bool name_may_be_one;  // the password is kept elsewhere: whether the user's name is the same word is not known
};

// The value of a header that goes with every message may be what a service knows its customer by.
bool IsSecretHeader(const std::string& name) {
  constexpr auto kSpeaking = std::to_array<std::string_view>(
      {"auth", "cookie", "credential", "key", "passw", "secret", "session", "signature", "token"});
  const std::string lower = platform::AsciiLower(std::string_view(name));
  return std::any_of(kSpeaking.begin(), kSpeaking.end(),
                     [&lower](std::string_view word) { return lower.find(word) != std::string::npos; });
}

// What is no value that is given to choose from, and no number where one belongs: those are as they are for everybody,
// and with a part of them hidden they would tell what that part is.
bool IsWordOfOnesOwn(const std::string& value, const SettingRow& row) {
  if (row.section != kAccount) {
    constexpr auto kFree = std::to_array<std::string_view>(
        {"CustomHeader", "CustomValue", "ReplyTo", "ReturnReceiptTo", "LocalIP", "Authentication"});
    const bool is_free = row.place == kBeforeServer || std::find(kFree.begin(), kFree.end(), row.key) != kFree.end();
    return value != row.fallback && (is_free || !platform::WholeNumberBetween(value, 0, 999'999));
  }
  const auto& key = *account::FindAccountKey(row.key);
  if (key.bounds) return !platform::WholeNumberBetween(value, key.bounds->lowest, key.bounds->highest);
  return std::find(key.choices.begin(), key.choices.end(), value) == key.choices.end();
}

// A word so short stands in many others by chance: where it stood would tell what it is.
bool Holds(std::string_view text, std::string_view secret) {
  constexpr std::ptrdiff_t kLongestByChance = 2;
  if (secret.empty()) return false;
  const auto letters = std::count_if(secret.begin(), secret.end(), [](char c) { return (c & 0xC0) != 0x80; });
  return letters > kLongestByChance ? text.find(secret) != std::string_view::npos : text == secret;
}

// Some services take one token for both user name and password, and a password may also have got into a wrong field.
std::string Shown(const std::string& value, const SettingRow& row, const Secrets& secrets) {
  const std::string shown = WithoutSecret(value, row.place);
  const bool may_be_one = secrets.name_may_be_one && row.key == "Username" && !value.empty();
  const bool holds_one = std::any_of(secrets.known.begin(), secrets.known.end(),
                                     [&](std::string_view secret) { return Holds(shown, secret); });
  return may_be_one || (holds_one && IsWordOfOnesOwn(value, row)) ? std::string(kHidden) : shown;
}

Result<std::string> ValueOf(const SettingRow& row, const profile::SettingsStore& settings, const Secrets& secrets) {
  const auto value = settings.Read(row.section, row.key, FallbackOf(row));
  if (!value || row.key != "CustomValue") return value ? Shown(*value, row, secrets) : value;
  auto header = settings.Read(row.section, "CustomHeader", "");
  if (!header) return header;
  return IsSecretHeader(*header) && !value->empty() ? std::string(kHidden) : Shown(*value, row, secrets);
}

template <typename Rows>
Result<void> AppendSettings(std::string& report, const Rows& rows, const profile::SettingsStore& settings,
                            const Secrets& secrets) {
  for (const SettingRow& row : rows) {
    const auto value = ValueOf(row, settings, secrets);
    if (!value) return value.error();
    const std::string label = row.label.empty() ? fmt::format("{}-{}", row.section, row.key) : std::string(row.label);
    AppendLine(report, label + ": ", *value);
  }
  return {};
}

}  // namespace

std::string WithoutSecret(std::string_view value, SecretPlace place) {
  constexpr std::string_view kScheme = "://";
  const auto at = value.rfind('@');
  const auto scheme = value.find(kScheme);
  const auto begin = scheme == std::string_view::npos ? 0 : scheme + kScheme.size();
  const bool holds_none = at == std::string_view::npos || at < begin || (begin == 0 && place == kInAddress);
  if (holds_none) return std::string(value);
  return fmt::format("{}{}{}", value.substr(0, begin), kHidden, value.substr(at));
}

Result<std::string> SystemReport(const SystemFacts& facts, const std::filesystem::path& install_path,
                                 const profile::SettingsStore& settings, const platform::Secret& password) {
  const auto account = account::AccountSettings::Load(settings);
  if (!account) return account.error();
  const Secrets secrets{{(*account)[account::AccountKey::kPassword], password.view()},
                        account::PlaceOfPassword(*account) != account::PasswordPlace::kSettings};
  std::string report;
  AppendSystem(report, facts);
  AppendLine(report, "---Quillcast Settings---", {});
  AppendLine(report, "Install Path: ", install_path.string());
  AppendLine(report, "Version: ", fmt::format("{}.{}", profile::kVersionMajor, profile::kVersionMinor));
  auto written = AppendSettings(report, kSettings, settings, secrets);
  for (const auto section : kMailSections) {
    if (written) written = AppendSettings(report, RowsOfMail(section), settings, secrets);
  }
  for (const auto section : account::kThreadSections) {
    if (written) written = AppendSettings(report, std::array{RowOfThreads(section)}, settings, secrets);
  }
  return written ? Result<std::string>(std::move(report)) : written.error();
}

}  // namespace quillcast::support
