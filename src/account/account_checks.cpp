#include "account/account_checks.h"

#include <array>

#include "account/account_connection.h"
#include "account/account_pace.h"
#include "account/password_place.h"
#include "platform/text.h"
#include "recipients/check_email.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

// A list of separators and blanks alone names none.
bool NamesAServer(std::string_view list) { return list.find_first_not_of("; \t\r\n") != std::string_view::npos; }

Sentence NoAddress(std::string_view email) {
  return Say("\"{}\" is no complete e-mail address, as you@example.org is.", platform::Printable(email, 80));
}

// Where a keyring or a command gives it, it is not looked for before it is needed.
bool NeedsPassword(const AccountSettings& a) { return a.IsOn(kAuth) && PlaceOfPassword(a) == PasswordPlace::kSettings; }

// Everybody who gets a letter reads them, and a mark that turns round what stands behind it would lie there about the
// address. The joiners and the marks of one place, which scripts need, do no such thing.
std::optional<Complaint<AccountControl>> HidesSomething(const AccountSettings& account) {
  for (const AccountKey key : {kName, kEmail}) {
    if (platform::Printable(account[key], account[key].size()) == account[key]) continue;
    return Complaint<AccountControl>{"", ControlOf(key),
                                     Say("{}: \"{}\" holds a sign that is not seen, such as one that turns round what "
                                         "stands behind it. Type it anew.",
                                         RowOf(key).name, platform::Printable(account[key], 80))};
  }
  return {};
}

struct AccountCheck {
  bool (*passes)(const AccountSettings&);
  const char* message;
  AccountControl control;
};

// In their order. The refusal of the sender's address has no message; deliberate.
constexpr auto kChecks = std::to_array<AccountCheck>({
    {[](const AccountSettings& a) { return !a[kName].empty(); }, "Please enter your name.", ControlOf(kName)},
    {[](const AccountSettings& a) { return IsSenderAddress(a[kEmail]); }, "", ControlOf(kEmail)},
    {[](const AccountSettings& a) { return NamesAServer(a[kServer]); }, "Please enter your mail server.",
     ControlOf(kServer)},
    {[](const AccountSettings& a) { return !a[kPort].empty(); }, "Please enter your port.", ControlOf(kPort)},
    {[](const AccountSettings& a) { return a.NumberOf(kPort).has_value(); }, "Please enter a valid port.",
     ControlOf(kPort)},
    {[](const AccountSettings& a) { return !a.IsOn(kAuth) || !a[kUsername].empty(); }, "You must enter the username.",
     ControlOf(kUsername)},
    {[](const AccountSettings& a) { return !NeedsPassword(a) || !a[kPassword].empty(); },
     "You must enter the password.", ControlOf(kPassword)},
    {[](const AccountSettings& a) { return !a[kTimeout].empty(); }, "Please enter your timeout.", ControlOf(kTimeout)},
    {[](const AccountSettings& a) { return a.NumberOf(kTimeout).has_value(); }, "Please enter a valid timeout.",
     ControlOf(kTimeout)},
    {[](const AccountSettings& a) { return a[kMethod] != "Bulk" || !a[kBccField].empty(); },
     "You must enter the BCC Field.", ControlOf(kBccField)},
    {[](const AccountSettings& a) { return a[kMethod] != "Third" || !a[kThirdPath].empty(); },
     "You must enter the queue directory.", AccountControl::kPickThirdPath},
    {[](const AccountSettings& a) { return !a[kWrap].empty(); }, "Please enter your wrap characters.",
     ControlOf(kWrap)},
    {[](const AccountSettings& a) { return a.NumberOf(kWrap).has_value(); }, "Please enter a valid wrap characters.",
     ControlOf(kWrap)},
});

}  // namespace

bool IsSenderAddress(std::string_view email) { return recipients::CheckEmail(email); }

std::optional<Complaint<AccountControl>> CheckAccount(const AccountSettings& account, std::string_view kept_for) {
  for (const auto& check : kChecks) {
    if (check.passes(account)) continue;
    Complaint<AccountControl> complaint{check.message, check.control};
    if (complaint.message.empty()) complaint.reason = NoAddress(account[kEmail]);
    return complaint;
  }
  if (auto hides = HidesSomething(account)) return hides;
  const auto servers = ServersOf(account);  // one of several may have a port of its own
  if (!servers)
    return Complaint<AccountControl>{"", ControlOf(kServer),
                                     Say("{} {}", servers.error().what, servers.error().remedy)};
  if (account.IsOn(kAuth) && PlaceOfPassword(account) == PasswordPlace::kCommand &&
      platform::Trim(account[kPasswordCommand]).empty())
    return Complaint<AccountControl>{"", ControlOf(kPasswordCommand), "Give the command that prints the password."};
  if (const auto fault = FaultInPace(account))
    return Complaint<AccountControl>{"", ControlOf(fault->key), Say("{} {}", fault->error.what, fault->error.remedy)};
  if (KeyringLacks(account, kept_for))
    return Complaint<AccountControl>{"", ControlOf(kPassword),
                                     Say("{} {}", NoPasswordInKeyring(account), kGivePassword)};
  return {};
}

}  // namespace quillcast::account
