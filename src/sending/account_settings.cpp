#include "sending/account_settings.h"

#include <fmt/format.h>

#include <algorithm>

#include "compose/charset_table.h"
#include "platform/text.h"
#include "recipients/check_email.h"
#include "recipients/recipient.h"

namespace quillcast::sending {
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
  Texts<compose::kCharsets.size()> names{};
  for (std::size_t i = 0; i < names.size(); ++i) names[i] = compose::kCharsets[i].display_name;
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

// The pages of the account dialog.
constexpr const char* kGeneralPage = "General";
constexpr const char* kMethodPage = "Method";
constexpr const char* kMessagePage = "Message";

// The number when the text is one and lies within the bounds; a fraction is no number here, the fields take digits
// only.
bool IsBetween(std::string_view text, std::int64_t low, std::int64_t high) {
  const auto number = platform::ParseWholeNumber(text);
  return number && *number >= low && *number <= high;
}

struct AccountCheck {
  bool (*passes)(const AccountSettings&);
  const char* message;
  AccountKey key;
  const char* page;
  const char* control = nullptr;  // where it is not the key's own
};

// In their order. The refusal of the sender's address has no message; deliberate.
constexpr auto kChecks = std::to_array<AccountCheck>({
    {[](const AccountSettings& a) { return !a[kName].empty(); }, "Please enter your name.", kName, kGeneralPage},
    {[](const AccountSettings& a) { return recipients::CheckEmail(a[kEmail]); }, "", kEmail, kGeneralPage},
    {[](const AccountSettings& a) { return !a[kServer].empty(); }, "Please enter your mail server.", kServer,
     kGeneralPage},
    {[](const AccountSettings& a) { return !a[kPort].empty(); }, "Please enter your port.", kPort, kGeneralPage},
    {[](const AccountSettings& a) { return IsBetween(a[kPort], 1, 65535); }, "Please enter a valid port.", kPort,
     kGeneralPage},
    {[](const AccountSettings& a) { return !a.IsOn(kAuth) || !a[kUsername].empty(); }, "You must enter the username.",
     kUsername, kGeneralPage},
    {[](const AccountSettings& a) { return !a.IsOn(kAuth) || !a[kPassword].empty(); }, "You must enter the password.",
     kPassword, kGeneralPage},
    {[](const AccountSettings& a) { return !a[kTimeout].empty(); }, "Please enter your timeout.", kTimeout,
     kGeneralPage},
    {[](const AccountSettings& a) { return IsBetween(a[kTimeout], 1, 10); }, "Please enter a valid timeout.", kTimeout,
     kGeneralPage},
    {[](const AccountSettings& a) { return a[kMethod] != "Bulk" || !a[kBccField].empty(); },
     "You must enter the BCC Field.", kBccField, kMethodPage},
    {[](const AccountSettings& a) { return a[kMethod] != "Third" || !a[kThirdPath].empty(); },
     "You must enter the queue directory.", kThirdPath, kMethodPage, "ThirdCommandButton"},
    {[](const AccountSettings& a) { return !a[kWrap].empty(); }, "Please enter your wrap characters.", kWrap,
     kMessagePage},
    {[](const AccountSettings& a) { return IsBetween(a[kWrap], 32, 128); }, "Please enter a valid wrap characters.",
     kWrap, kMessagePage},
});

// What each key can be in this version, where that is less than its choices.
struct Served {
  AccountKey key;
  bool (*served)(const AccountSettings&);
  const char* choose;
};
constexpr auto kServed = std::to_array<Served>({
    {kCharSet,
     [](const AccountSettings& a) {
       return a[kCharSet] == "Unicode (UTF-8)" || a[kCharSet] == "Western European (Windows)";
     },
     "\"Unicode (UTF-8)\" or \"Western European (Windows)\""},
    {kAuthMode, [](const AccountSettings& a) { return !a.IsOn(kAuth) || a[kAuthMode] == "AUTH LOGIN"; },
     "\"AUTH LOGIN\""},
});

}  // namespace

std::span<const AccountKeyRow> AccountKeyRows() { return kRows; }
const AccountKeyRow& RowOf(AccountKey key) { return kRows[static_cast<std::size_t>(key)]; }

const AccountKeyRow* FindAccountKey(std::string_view name) {
  const auto found = std::find_if(kRows.begin(), kRows.end(), [&](const AccountKeyRow& row) {
    return platform::EqualsIgnoringAsciiCase(row.name, name);
  });
  return found == kRows.end() ? nullptr : &*found;
}

AccountSettings::AccountSettings() {
  for (const auto& row : kRows) Set(row.key, std::string(row.fallback));
}

Result<AccountSettings> AccountSettings::Load(const app::SettingsStore& store) {
  AccountSettings account;
  for (const auto& row : kRows) {
    auto value = store.Read(kAccountSection, row.name, row.fallback);
    if (!value) return value.error();
    account.Set(row.key, std::move(*value));
  }
  return account;
}

Result<void> AccountSettings::Save(app::SettingsStore& store) const {
  std::array<app::SettingValue, kRows.size()> values;
  for (std::size_t i = 0; i < kRows.size(); ++i) values[i] = {kRows[i].name, (*this)[kRows[i].key]};
  return store.WriteAll(kAccountSection, values);
}

int AccountSettings::TimeoutSeconds() const {
  return IsBetween((*this)[kTimeout], 1, 10) ? static_cast<int>(*platform::ParseWholeNumber((*this)[kTimeout])) * 60
                                             : 60;
}

std::optional<Complaint> CheckAccount(const AccountSettings& account) {
  for (const auto& check : kChecks) {
    if (check.passes(account)) continue;
    const char* control = check.control;
    return Complaint{check.message, control != nullptr ? control : std::string(RowOf(check.key).control), check.page};
  }
  return {};
}

std::string TidiedByDialog(const AccountSettings& account) {
  if (account.IsOn(kAuth)) return {};
  std::string keys;
  for (const AccountKey key : {kUsername, kPassword, kPipeline, kNoAuth, kAuthMode}) {
    if (account[key] == RowOf(key).fallback) continue;
    keys += keys.empty() ? "" : ", ";
    keys += RowOf(key).name;
  }
  if (keys.empty()) return {};
  return fmt::format("Stored as asked. Without Auth=1 the account dialog will set back: {}.", keys);
}

std::optional<Error> UnservedSetting(const AccountSettings& account) {
  for (const auto& row : kServed) {
    if (row.served(account)) continue;
    const auto name = RowOf(row.key).name;
    return Error{Failure::kNotConfigured,
                 fmt::format("The account's {} is \"{}\", which this version does not serve yet.", name,
                             platform::Printable(account[row.key], 80)),
                 fmt::format("Set it to {}: quillcast account set {}=...", row.choose, name)};
  }
  return {};
}

}  // namespace quillcast::sending
