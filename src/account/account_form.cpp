#include "account/account_form.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace quillcast::account {
namespace {

using enum AccountKey;

bool SignsIn(const AccountSettings& a) { return a.IsOn(kAuth); }
bool IsBulk(const AccountSettings& a) { return a[kMethod] == "Bulk"; }
bool IsThird(const AccountSettings& a) { return a[kMethod] == "Third"; }
bool MayWrap(const AccountSettings& a) { return a[kEncoding] == "None"; }
bool Wraps(const AccountSettings& a) { return MayWrap(a) && a.IsOn(kAutoWrap); }

struct EnablingRule {
  std::string_view control;
  bool (*enabled)(const AccountSettings&);
  std::string_view needs;         // the same for a person at the command line
  std::optional<AccountKey> key;  // what it edits
  bool set_back = false;          // to its default, while it is disabled
};

// A row may rest on a value that a row above sets back. ToFieldComboBox has none: every run reads its value, whatever
// the method.
constexpr auto kRules = std::to_array<EnablingRule>({
    {"UsernameTextBox", SignsIn, "Auth=1", kUsername, true},
    {"PasswordTextBox", SignsIn, "Auth=1", kPassword, true},
    {"AuthModeComboBox", SignsIn, "Auth=1", kAuthMode, true},
    {"PipelineCheckBox", SignsIn, "Auth=1", kPipeline, true},
    {"NoAuthCheckBox", SignsIn, "Auth=1", kNoAuth, true},
    {"BCCFieldTextBox", IsBulk, "Method=Bulk", kBccField},
    {"ThirdFieldComboBox", IsThird, "Method=Third", kThirdField},
    {"ThirdPathTextBox", IsThird, "Method=Third", kThirdPath},
    {"ThirdCommandButton", IsThird, "Method=Third", {}},
    {"AutoWrapCheckBox", MayWrap, "Encoding=None", kAutoWrap, true},
    {"WrapTextBox", Wraps, "Encoding=None and AutoWrap=1", kWrap, true},
    {"WrapUpDown", Wraps, "Encoding=None and AutoWrap=1", {}},
});

const EnablingRule* RuleOf(std::string_view control) {
  const auto* const rule =
      std::find_if(kRules.begin(), kRules.end(), [&](const EnablingRule& row) { return row.control == control; });
  return rule == kRules.end() ? nullptr : rule;
}

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
    if (rule.set_back && !rule.enabled(shown)) shown.Set(*rule.key, std::string(RowOf(*rule.key).fallback));
  }
}

bool IsEnabled(const AccountSettings& shown, std::string_view control) {
  const auto* const rule = RuleOf(control);
  return rule == nullptr || rule->enabled(shown);
}

std::string_view RadioButtonOf(std::string_view method) {
  if (method == "Bulk") return "BulkRadioButton";
  return method == "Third" ? "ThirdRadioButton" : "PersonalRadioButton";
}

const char* TimeoutUnit(std::string_view timeout) { return timeout == "1" ? "Minute" : "Minutes"; }

bool TakesDigitsOnly(AccountKey key) { return key == kPort || key == kTimeout || key == kWrap; }

std::string ForgetUnusedSignIn(AccountSettings& account) {
  std::string forgotten;
  if (SignsIn(account)) return forgotten;
  for (const AccountKey key : {kUsername, kPassword}) {
    if (account[key].empty()) continue;
    forgotten += fmt::format("{}{}", forgotten.empty() ? "" : ", ", RowOf(key).name);
    account.Set(key, {});
  }
  return forgotten;
}

std::vector<std::string> TidiedByDialog(const AccountSettings& stored, std::span<const AccountKey> asked) {
  const AccountSettings shown = ShownInDialog(stored);
  std::vector<std::string> sentences;
  for (auto rule = kRules.begin(); rule != kRules.end();) {
    const auto group = rule;
    std::string keys;
    for (; rule != kRules.end() && rule->needs == group->needs; ++rule) {
      if (!rule->key || rule->enabled(shown)) continue;
      const bool told = rule->set_back ? shown[*rule->key] != stored[*rule->key]
                                       : std::find(asked.begin(), asked.end(), *rule->key) != asked.end();
      if (told) keys += fmt::format("{}{}", keys.empty() ? "" : ", ", RowOf(*rule->key).name);
    }
    if (keys.empty()) continue;
    sentences.push_back(fmt::format("Stored as asked. Without {} the account dialog will {}: {}.", group->needs,
                                    group->set_back ? "set back" : "keep but not offer", keys));
  }
  return sentences;
}

}  // namespace quillcast::account
