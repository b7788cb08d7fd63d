#include "account/account_checks.h"

#include <array>

#include "account/account_connection.h"
#include "platform/text.h"
#include "recipients/check_email.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

// The pages of the account dialog.
constexpr const char* kGeneralPage = "General";
constexpr const char* kMethodPage = "Method";
constexpr const char* kMessagePage = "Message";

bool IsBetween(std::string_view text, std::int64_t low, std::int64_t high) {
  return platform::WholeNumberBetween(text, low, high).has_value();
}

// A list of separators and blanks alone names none.
bool NamesAServer(std::string_view list) { return list.find_first_not_of("; \t\r\n") != std::string_view::npos; }

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
    {[](const AccountSettings& a) { return NamesAServer(a[kServer]); }, "Please enter your mail server.", kServer,
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
    {[](const AccountSettings& a) { return IsBetween(a[kWrap], kNarrowestWrap, kWidestWrap); },
     "Please enter a valid wrap characters.", kWrap, kMessagePage},
});

}  // namespace

std::optional<Complaint> CheckAccount(const AccountSettings& account) {
  for (const auto& check : kChecks) {
    if (check.passes(account)) continue;
    const char* control = check.control;
    return Complaint{check.message, control != nullptr ? control : std::string(RowOf(check.key).control), check.page};
  }
  const auto servers = ServersOf(account);  // one of several may have a port of its own
  if (!servers) return Complaint{"", std::string(RowOf(kServer).control), kGeneralPage, InOneLine(servers.error())};
  return {};
}

}  // namespace quillcast::account
