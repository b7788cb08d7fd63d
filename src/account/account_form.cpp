#include "account/account_form.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "account/password_place.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

bool SignsIn(const AccountSettings& a) { return a.IsOn(kAuth); }
bool IsTypedHere(const AccountSettings& a) { return PlaceOfPassword(a) == PasswordPlace::kSettings; }
bool IsByCommand(const AccountSettings& a) { return SignsIn(a) && PlaceOfPassword(a) == PasswordPlace::kCommand; }
bool IsBulk(const AccountSettings& a) { return a[kMethod] == "Bulk"; }
bool IsThird(const AccountSettings& a) { return a[kMethod] == "Third"; }
bool MayWrap(const AccountSettings& a) { return a[kEncoding] == "None"; }
bool Wraps(const AccountSettings& a) { return MayWrap(a) && a.IsOn(kAutoWrap); }

struct EnablingRule {
  AccountControl control;
  bool (*enabled)(const AccountSettings&);
  std::string_view needs;  // the same for a person at the command line
  bool set_back = false;   // what it edits, to its default, while it is disabled
};

// What the rule's control edits.
std::optional<AccountKey> KeyOf(AccountControl control) {
  if (control >= ControlOf(AccountKey::kCount)) return {};
  return static_cast<AccountKey>(control);
}

// A row may rest on a value that a row above sets back. ToFieldComboBox has none: every run reads its value, whatever
// the method.
constexpr auto kRules = std::to_array<EnablingRule>({
    {ControlOf(kUsername), SignsIn, "Auth=1", true},
    {ControlOf(kPassword), SignsIn, "Auth=1", true},
    {ControlOf(kAuthMode), SignsIn, "Auth=1", true},
    {ControlOf(kPipeline), SignsIn, "Auth=1", true},
    {ControlOf(kNoAuth), SignsIn, "Auth=1", true},
    {ControlOf(kPasswordFrom), SignsIn, "Auth=1", true},
    {ControlOf(kPassword), IsTypedHere, "PasswordFrom=Settings"},
    {ControlOf(kPasswordCommand), IsByCommand, "PasswordFrom=Command"},
    {ControlOf(kBccField), IsBulk, "Method=Bulk"},
    {ControlOf(kThirdField), IsThird, "Method=Third"},
    {ControlOf(kThirdPath), IsThird, "Method=Third"},
    {AccountControl::kPickThirdPath, IsThird, "Method=Third"},
    {ControlOf(kAutoWrap), MayWrap, "Encoding=None", true},
    {ControlOf(kWrap), Wraps, "Encoding=None and AutoWrap=1", true},
    {AccountControl::kWrapArrows, Wraps, "Encoding=None and AutoWrap=1"},
});

bool ShowsAnyText(AccountKey key) { return key == kToField || key == kThirdField || key == kCharSet; }

}  // namespace

AccountSettings ShownInDialog(AccountSettings stored) {
  for (const auto& row : AccountKeyRows()) {
    if (row.choices.empty() || ShowsAnyText(row.key)) continue;
    const bool listed = std::find(row.choices.begin(), row.choices.end(), stored[row.key]) != row.choices.end();
    if (!listed) stored.Set(row.key, std::string(row.choices.front()));
  }
  ApplyRules(stored);
  return stored;
}

void ApplyRules(AccountSettings& shown) {
  for (const auto& rule : kRules) {
    if (rule.set_back && !rule.enabled(shown))
      shown.Set(*KeyOf(rule.control), std::string(RowOf(*KeyOf(rule.control)).fallback));
  }
}

bool IsEnabled(const AccountSettings& shown, AccountControl control) {
  return std::all_of(kRules.begin(), kRules.end(),
                     [&](const EnablingRule& rule) { return rule.control != control || rule.enabled(shown); });
}

const char* TimeoutUnit(std::string_view timeout) { return timeout == "1" ? "Minute" : "Minutes"; }

std::string ForgetUnusedSignIn(AccountSettings& account) {
  std::string forgotten;
  if (SignsIn(account)) return forgotten;
  for (const AccountKey key : {kUsername, kPassword, kPasswordFrom}) {
    const std::string_view nothing = RowOf(key).fallback;
    if (account[key] == nothing || (key == kPasswordFrom && PlaceOfPassword(account) == PasswordPlace::kCommand))
      continue;
    forgotten += fmt::format("{}{}", forgotten.empty() ? "" : ", ", RowOf(key).name);
    account.Set(key, std::string(nothing));
  }
  return forgotten;
}

std::vector<Sentence> TidiedByDialog(const AccountSettings& stored, std::span<const AccountKey> asked) {
  const AccountSettings shown = ShownInDialog(stored);
  std::vector<Sentence> sentences;
  for (auto rule = kRules.begin(); rule != kRules.end();) {
    const auto group = rule;
    std::string keys;
    for (; rule != kRules.end() && rule->needs == group->needs; ++rule) {
      const auto key = KeyOf(rule->control);
      if (!key || rule->enabled(shown)) continue;
      const bool told =
          rule->set_back ? shown[*key] != stored[*key] : std::find(asked.begin(), asked.end(), *key) != asked.end();
      if (told) keys += fmt::format("{}{}", keys.empty() ? "" : ", ", RowOf(*key).name);
    }
    if (keys.empty()) continue;
    sentences.push_back(
        group->set_back
            ? Say("Stored as asked. Without {} the account dialog will set back: {}.", group->needs, keys)
            : Say("Stored as asked. Without {} the account dialog will keep but not offer: {}.", group->needs, keys));
  }
  return sentences;
}

}  // namespace quillcast::account
