#include "account/account_settings.h"

#include <algorithm>

#include "document/offered_charsets.h"
#include "platform/secret.h"
#include "platform/text.h"
#include "recipients/recipient.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

template <std::size_t N>
using Texts = std::array<std::string_view, N>;

constexpr Texts<2> kSwitch = {"0", "1"};
constexpr Texts<3> kAuthModes = {"AUTH LOGIN", "CRAM MD5", "NTLM"};
constexpr Texts<3> kMethods = {"Personal", "Bulk", "Third"};
constexpr Texts<3> kEncodings = {"None", "Quoted Printable", "Base 64"};
constexpr Texts<4> kQueueServers = {"Quiksoft SMTP Express Service", "Microsoft SMTP Service", "Ipswitch IMail Server",
                                    "Merak Mail Server"};
constexpr Texts<7> kNotify = {"Do not send command to server",
                              "Do whatever the server default is",
                              "Notify me in all conditions",
                              "Notify me if message fails",
                              "Notify me if message is sent",
                              "Notify me if message is delayed",
                              "Do not notify me"};
constexpr Texts<4> kReturn = {"Do not send command to server", "Return whatever the server default is",
                              "Return only the header of the message", "Return the full message"};
constexpr Texts<4> kSecurities = {"Automatic", "STARTTLS", "TLS", "None"};
constexpr Texts<3> kPasswordPlaces = {"Settings", "Keyring", "Command"};
constexpr auto kFieldLabels = [] {
  Texts<recipients::kFields.size()> labels{};
  for (std::size_t i = 0; i < labels.size(); ++i) labels[i] = recipients::kFields[i].label;
  return labels;
}();
constexpr auto kCharSets = [] {
  Texts<document::kOfferedCharsets.size()> names{};
  for (std::size_t i = 0; i < names.size(); ++i) names[i] = document::kOfferedCharsets[i].display_name;
  return names;
}();

constexpr auto kRows = std::to_array<AccountKeyRow>({
    {kName, "Name", "", {}},
    {kEmail, "Email", "", {}},
    {kServer, "Server", "", {}},
    {kPort, "Port", "25", {}, Bounds{1, 65535}},
    {kAuth, "Auth", "0", kSwitch},
    {kUsername, "Username", "", {}},
    {kPassword, "Password", "", {}},
    {kAuthMode, "AuthMode", "AUTH LOGIN", kAuthModes},
    {kPipeline, "Pipeline", "0", kSwitch},
    {kNoAuth, "NoAuth", "0", kSwitch},
    {kBoundary, "Boundary", "0", kSwitch},
    {kTimeout, "Timeout", "1", {}, Bounds{1, 10}},
    {kMethod, "Method", "Personal", kMethods},
    {kToField, "ToField", "Email Address", kFieldLabels},
    {kBccField, "BCCField", "Group", {}},
    {kThirdField, "ThirdField", "Quiksoft SMTP Express Service", kQueueServers},
    {kThirdPath, "ThirdPath", "", {}},
    {kHeaderEncoding, "HeaderEncoding", "None", kEncodings},
    {kEncoding, "Encoding", "Quoted Printable", kEncodings},
    {kAttachmentEncoding, "AttachmentEncoding", "Base 64", kEncodings},
    {kCharSet, "CharSet", "Western European (Windows)", kCharSets},
    {kAutoWrap, "AutoWrap", "0", kSwitch},
    {kWrap, "Wrap", "76", {}, Bounds{32, 128}},
    {kTextPart, "TextPart", "1", kSwitch},
    {kExtended, "Extended", "0", kSwitch},
    {kDsnNotify, "DSNNotify", "Do not send command to server", kNotify},
    {kDsnReturn, "DSNReturn", "Do not send command to server", kReturn},
    {kSecurity, "Security", "Automatic", kSecurities},
    {kPasswordFrom, "PasswordFrom", "Settings", kPasswordPlaces},
    {kPasswordCommand, "PasswordCommand", "", {}},
    {kRate, "Rate", "", {}},
    {kQuotaHour, "QuotaHour", "", {}},
    {kQuotaDay, "QuotaDay", "", {}},
    {kDomainRate, "DomainRate", "", {}},
    {kHours, "Hours", "", {}},
    {kPauseAfter, "PauseAfter", "", {}},
    {kPerConnection, "PerConnection", "", {}},
    {kConnections, "Connections", "", {}},
    {kRetries, "Retries", "", {}},
    {kRetryAfter, "RetryAfter", "", {}},
    {kSlowDown, "SlowDown", "0", kSwitch},
    {kNetworkWait, "NetworkWait", "", {}},
});
static_assert(kRows.size() == static_cast<std::size_t>(kCount));

}  // namespace

AccountKeyKind KindOf(const AccountKeyRow& row) {
  if (row.bounds) return AccountKeyKind::kNumber;
  if (row.choices.empty()) return AccountKeyKind::kText;
  return row.choices.data() == kSwitch.data() ? AccountKeyKind::kSwitch : AccountKeyKind::kChoice;
}

std::span<const AccountKeyRow> AccountKeyRows() { return kRows; }
const AccountKeyRow& RowOf(AccountKey key) { return kRows[static_cast<std::size_t>(key)]; }

const AccountKeyRow* FindAccountKey(std::string_view name) {
  const auto found = std::find_if(kRows.begin(), kRows.end(), [&](const AccountKeyRow& row) {
    return platform::EqualsIgnoringAsciiCase(row.name, name);
  });
  return found == kRows.end() ? nullptr : &*found;
}

Result<bool> AccountIsFilledIn(const profile::SettingsStore& settings) {
  for (const AccountKey key : {kName, kEmail, kServer, kPort}) {
    const auto value = settings.Read(kAccountSection, RowOf(key).name, "");
    if (!value) return value.error();
    if (value->empty()) return false;
  }
  return true;
}

AccountSettings::AccountSettings() {
  for (const auto& row : kRows) Set(row.key, std::string(row.fallback));
}

AccountSettings::~AccountSettings() { ForgetPassword(); }

void AccountSettings::ForgetPassword() { platform::Wipe(values_[static_cast<std::size_t>(kPassword)]); }

Result<AccountSettings> AccountSettings::Load(const profile::SettingsStore& store) {
  std::array<profile::SettingName, kRows.size()> names;
  for (std::size_t i = 0; i < kRows.size(); ++i) names[i] = {kAccountSection, kRows[i].name, kRows[i].fallback};
  auto values = store.ReadAll(names);
  if (!values) return values.error();
  AccountSettings account;
  for (std::size_t i = 0; i < kRows.size(); ++i) account.Set(kRows[i].key, std::move((*values)[i]));
  return account;
}

Result<void> AccountSettings::Save(profile::SettingsStore& store) const {
  std::array<profile::SettingValue, kRows.size()> values;
  for (std::size_t i = 0; i < kRows.size(); ++i) values[i] = {kRows[i].name, (*this)[kRows[i].key]};
  return store.WriteAll(kAccountSection, values);
}

std::optional<std::int64_t> AccountSettings::NumberOf(AccountKey key) const {
  const auto& bounds = RowOf(key).bounds;
  return bounds ? platform::WholeNumberBetween((*this)[key], bounds->lowest, bounds->highest) : std::nullopt;
}

int AccountSettings::TimeoutSeconds() const { return static_cast<int>(NumberOf(kTimeout).value_or(1)) * 60; }

}  // namespace quillcast::account
