// The one mail account: its settings as they are stored, their defaults and their choices. What is checked
// before they are saved is in account_checks.h, what the dialog does with them in account_form.h.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::account {

inline constexpr const char* kAccountSection = "Account";

// In the order in which they are loaded and saved; our own keys come after the others.
enum class AccountKey {
  kName,
  kEmail,
  kServer,
  kPort,
  kAuth,
  kUsername,
  kPassword,
  kAuthMode,
  kPipeline,
  kNoAuth,
  kBoundary,
  kTimeout,
  kMethod,
  kToField,
  kBccField,
  kThirdField,
  kThirdPath,
  kHeaderEncoding,
  kEncoding,
  kAttachmentEncoding,
  kCharSet,
  kAutoWrap,
  kWrap,
  kTextPart,
  kExtended,
  kDsnNotify,
  kDsnReturn,
  kSecurity,
  kPasswordFrom,
  kPasswordCommand,
  kRate,
  kQuotaHour,
  kQuotaDay,
  kDomainRate,
  kHours,
  kPauseAfter,
  kPerConnection,
  kConnections,
  kRetries,
  kRetryAfter,
  kSlowDown,
  kNetworkWait,
  kCount
};

// Of a whole number; both are allowed.
struct Bounds {
  std::int64_t lowest = 0;
  std::int64_t highest = 0;
};

// The one place that knows a key's name, default, choices and bounds.
struct AccountKeyRow {
  AccountKey key;
  std::string_view name;                      // in the store, and on the command line
  std::string_view fallback;                  // when the store has none
  std::span<const std::string_view> choices;  // what it may be; empty for free text and numbers
  std::optional<Bounds> bounds = {};          // of a number
};

// What kind of value a key holds, and so which control edits it.
enum class AccountKeyKind { kText, kNumber, kSwitch, kChoice };
AccountKeyKind KindOf(const AccountKeyRow& row);

// In the order of AccountKey.
std::span<const AccountKeyRow> AccountKeyRows();
const AccountKeyRow& RowOf(AccountKey key);
// The row with this name, without regard to ASCII case.
const AccountKeyRow* FindAccountKey(std::string_view name);

// Whether the checks before sending take the account for filled in: its name, address, server and port were saved.
Result<bool> AccountIsFilledIn(const profile::SettingsStore& settings);

// The texts as stored. Nothing is cached between runs: load them anew for each.
class AccountSettings {
 public:
  AccountSettings();   // the defaults
  ~AccountSettings();  // the password leaves no trace in memory
  AccountSettings(const AccountSettings&) = default;
  AccountSettings& operator=(const AccountSettings&) = default;
  AccountSettings(AccountSettings&&) = default;
  AccountSettings& operator=(AccountSettings&&) = default;

  // As it stood at one moment; what is not stored is its row's fallback. Values are taken as they are; account_checks.h
  // judges them.
  static Result<AccountSettings> Load(const profile::SettingsStore& store);
  // Writes every key, in order.
  Result<void> Save(profile::SettingsStore& store) const;

  // As stored. IsOn is true for "1" alone.
  const std::string& operator[](AccountKey key) const { return values_[static_cast<std::size_t>(key)]; }
  void Set(AccountKey key, std::string value) { values_[static_cast<std::size_t>(key)] = std::move(value); }
  void ForgetPassword();  // and wipe it
  bool IsOn(AccountKey key) const { return (*this)[key] == "1"; }
  // The number that a key with bounds holds; nothing where the stored text is none within them.
  std::optional<std::int64_t> NumberOf(AccountKey key) const;
  int TimeoutSeconds() const;  // 60 to 600; of a minute where the stored text is no number of minutes

 private:
  std::array<std::string, static_cast<std::size_t>(AccountKey::kCount)> values_;
};

}  // namespace quillcast::account
