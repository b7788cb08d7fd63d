#include "account/account_change.h"

#include <algorithm>
#include <array>

#include "account/account_checks.h"
#include "account/password_place.h"

namespace quillcast::account {
namespace {

using enum AccountKey;

// Beside the password itself: whose it is, and where it is.
constexpr std::array kSignIn = {kServer, kAuth, kUsername, kPasswordFrom, kPasswordCommand};
// How it gets to that server, and whether anybody could read it on the way.
constexpr std::array kWayThere = {kPort, kSecurity, kAuthMode};
constexpr const char* kLookAgain = "Look at the account as it is now, and try again.";

}  // namespace

AccountChange::AccountChange(const AccountSettings& seen, AccountSettings wanted) : wanted_(std::move(wanted)) {
  for (const auto& row : AccountKeyRows()) {
    if (seen[row.key] != wanted_[row.key]) Include(row.key);
  }
}

bool AccountChange::ChangesSignIn() const { return Has(kPassword) || HasOneOf(kSignIn); }

Result<AccountSettings> AccountChange::Onto(AccountSettings stored) const {
  for (const auto& row : AccountKeyRows()) {
    if (Has(row.key)) stored.Set(row.key, wanted_[row.key]);
  }
  // Whoever names another server or user without a password means the one that was there.
  const bool goes_elsewhere = Has(kServer) || Has(kUsername);
  const bool has_its_password = !goes_elsewhere || stored[kPassword] == wanted_[kPassword];
  const auto is_wanted = [&](AccountKey key) { return stored[key] == wanted_[key]; };
  const bool is_as_wanted = std::all_of(kSignIn.begin(), kSignIn.end(), is_wanted) &&
                            std::all_of(kWayThere.begin(), kWayThere.end(), is_wanted);
  if ((is_as_wanted && has_its_password) || (!ChangesSignIn() && !HasOneOf(kWayThere))) return stored;
  return Error{Failure::kTryAgain,
               "Another window or program has changed the account's server, security or sign-in meanwhile.",
               kLookAgain};
}

std::optional<Complaint<AccountControl>> AccountChange::Refusal(const AccountSettings& account,
                                                                std::string_view kept_for) const {
  return CheckAccount(account, ChangesSignIn() ? std::string(kept_for) : WhomOf(account));
}

Error ChangedMeanwhile(const Complaint<AccountControl>& why) {
  return {Failure::kTryAgain,
          Say("Another window or program has changed the account meanwhile, which now lacks something: {}",
              why.message.empty() ? why.reason : Sentence(why.message)),
          kLookAgain};
}

}  // namespace quillcast::account
