#include "account/account_settings.h"

#include <algorithm>

#include "document/charset_table.h"
#include "platform/text.h"
#include "recipients/recipient.h"
#include "smtp/secret.h"

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
constexpr auto kFieldLabels = [] {
  Texts<recipients::kFields.size()> labels{};
  for (std::size_t i = 0; i < labels.size(); ++i) labels[i] = recipients::kFields[i].label;
  return labels;
}();
constexpr auto kCharSets = [] {
  Texts<document::kCharsets.size()> names{};
  for (std::size_t i = 0; i < names.size(); ++i) names[i] = document::kCharsets[i].display_name;
  return names;
}();

constexpr auto kRows = std::to_array<AccountKeyRow>({
    {kName, "Name", "FullNameTextBox", "", {}},
    {kEmail, "Email", "EmailTextBox", "", {}},
    {kServer, "Server", "ServerTextBox", "", {}},
    {kPort, "Port", "PortTextBox", "25", {}},
    {kAuth, "Auth", "AuthCheckBox", "0", kSwitch},
    {kUsername, "Username", "UsernameTextBox", "", {}},
    {kPassword, "Password", "PasswordTextBox", "", {}},
    {kAuthMode, "AuthMode", "AuthModeComboBox", "AUTH LOGIN", kAuthModes},
    {kPipeline, "Pipeline", "PipelineCheckBox", "0", kSwitch},
    {kNoAuth, "NoAuth", "NoAuthCheckBox", "0", kSwitch},
    {kBoundary, "Boundary", "BoundaryCheckBox", "0", kSwitch},
    {kTimeout, "Timeout", "TimeoutTextBox", "1", {}},
    {kMethod, "Method", "PersonalRadioButton", "Personal", kMethods},
    {kToField, "ToField", "ToFieldComboBox", "Email Address", kFieldLabels},
    {kBccField, "BCCField", "BCCFieldTextBox", "Group", {}},
    {kThirdField, "ThirdField", "ThirdFieldComboBox", "Quiksoft SMTP Express Service", kQueueServers},
    {kThirdPath, "ThirdPath", "ThirdPathTextBox", "", {}},
    {kHeaderEncoding, "HeaderEncoding", "HeaderEncodingComboBox", "None", kEncodings},
    {kEncoding, "Encoding", "ContentEncodingComboBox", "Quoted Printable", kEncodings},
    {kAttachmentEncoding, "AttachmentEncoding", "AttachmentEncodingComboBox", "Base 64", kEncodings},
    {kCharSet, "CharSet", "CharSetComboBox", "Western European (Windows)", kCharSets},
    {kAutoWrap, "AutoWrap", "AutoWrapCheckBox", "0", kSwitch},
    {kWrap, "Wrap", "WrapTextBox", "76", {}},
    {kTextPart, "TextPart", "TextPartCheckBox", "1", kSwitch},
    {kExtended, "Extended", "ExtendedCheckBox", "0", kSwitch},
    {kDsnNotify, "DSNNotify", "NotifyComboBox", "Do not send command to server", kNotify},
    {kDsnReturn, "DSNReturn", "ReturnComboBox", "Do not send command to server", kReturn},
    {kSecurity, "Security", "SecurityComboBox", "Automatic", kSecurities},
});
static_assert(kRows.size() == static_cast<std::size_t>(kCount));

}  // namespace

std::span<const AccountKeyRow> AccountKeyRows() { return kRows; }
const AccountKeyRow& RowOf(AccountKey key) { return kRows[static_cast<std::size_t>(key)]; }

const AccountKeyRow* FindAccountKey(std::string_view name) {
  const auto found = std::find_if(kRows.begin(), kRows.end(), [&](const AccountKeyRow& row) {
    return platform::EqualsIgnoringAsciiCase(row.name, name);
  });
  return found == kRows.end() ? nullptr : &*found;
}

Result<bool> AccountIsFilledIn(const profile::SettingsStore& settings) {
  for (const char* key : {"Name", "Email", "Server", "Port"}) {
    const auto value = settings.Read(kAccountSection, key, "");
    if (!value) return value.error();
    if (value->empty()) return false;
  }
  return true;
}

AccountSettings::AccountSettings() {
  for (const auto& row : kRows) Set(row.key, std::string(row.fallback));
}

AccountSettings::~AccountSettings() { smtp::Wipe(values_[static_cast<std::size_t>(kPassword)]); }

Result<AccountSettings> AccountSettings::Load(const profile::SettingsStore& store) {
  AccountSettings account;
  for (const auto& row : kRows) {
    auto value = store.Read(kAccountSection, row.name, row.fallback);
    if (!value) return value.error();
    account.Set(row.key, std::move(*value));
  }
  return account;
}

Result<void> AccountSettings::Save(profile::SettingsStore& store) const {
  std::array<profile::SettingValue, kRows.size()> values;
  for (std::size_t i = 0; i < kRows.size(); ++i) values[i] = {kRows[i].name, (*this)[kRows[i].key]};
  return store.WriteAll(kAccountSection, values);
}

int AccountSettings::TimeoutSeconds() const {
  return static_cast<int>(platform::WholeNumberBetween((*this)[kTimeout], 1, 10).value_or(1)) * 60;
}

}  // namespace quillcast::account
