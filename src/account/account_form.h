// The account dialog without a window: what it shows for stored values, which controls can be used, what its rules
// change. The form puts values into controls and asks here after every change.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "account/account_settings.h"

namespace quillcast::account {

// What is on screen once the dialog has loaded. A stored text that is no entry of its box, no state of its check box or
// no method leaves the first entry, off, "Personal", and is not reported; ToFieldComboBox, ThirdFieldComboBox and
// CharSetComboBox, whose entries name things that exist outside this program too, show it as stored.
AccountSettings ShownInDialog(AccountSettings stored);

// What the enabling rules make of the values on screen; after every change of a control. Sign-in off empties the user
// and the password and sets AuthMode, Pipeline, NoAuth and PasswordFrom back; an encoding other than "None" takes
// AutoWrap off; without AutoWrap, Wrap is 76.
void ApplyRules(AccountSettings& shown);

// The controls of the dialog: one for each key, and those that edit no key of their own.
enum class AccountControl { kPickThirdPath = static_cast<int>(AccountKey::kCount), kWrapArrows, kCount };
constexpr AccountControl ControlOf(AccountKey key) { return static_cast<AccountControl>(key); }

// Whether a control can be used; its label likewise. One that no rule speaks of can always be used.
bool IsEnabled(const AccountSettings& shown, AccountControl control);

// "Minute" for exactly "1", else "Minutes".
const char* TimeoutUnit(std::string_view timeout);

// Takes the user and the password out of values that sign in nowhere, also out of the keyring once they are saved: a
// secret that nothing uses is not kept. The names of what was taken out, for a person; empty when there was nothing.
std::string ForgetUnusedSignIn(AccountSettings& account);

// Sentences on what the dialog would do to values that were stored as asked: those that it sets back, and among `asked`
// those that belong to a method that is not chosen.
std::vector<Sentence> TidiedByDialog(const AccountSettings& stored, std::span<const AccountKey> asked);

}  // namespace quillcast::account
