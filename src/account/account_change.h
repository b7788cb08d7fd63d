// What is to be changed of the account by somebody who saw it a while ago, such as an open window.
#pragma once

#include <algorithm>
#include <bitset>
#include <optional>
#include <span>
#include <string_view>

#include "account/account_form.h"
#include "account/account_settings.h"
#include "platform/complaint.h"

namespace quillcast::account {

class AccountChange {
 public:
  // All that is wanted otherwise than it was seen.
  AccountChange(const AccountSettings& seen, AccountSettings wanted);

  // A key that was asked for by name belongs to it also where it was seen to be so already.
  void Include(AccountKey key) { changed_.set(static_cast<std::size_t>(key)); }
  // The whole account, as whoever wants the change believes it to become.
  const AccountSettings& wanted() const { return wanted_; }
  // What becomes of the account as it is stored now: what others have changed meanwhile stays. kTryAgain where this
  // changes the server, the way there or the sign-in, and they would not be the wanted ones: a password belongs to one
  // server and one user and goes there as its owner chose, and whoever typed something else saw another account.
  Result<AccountSettings> Onto(AccountSettings stored) const;
  // What refuses that account: as CheckAccount, but for a password that the keyring lacks where this changes neither
  // the server nor the sign-in.
  std::optional<Complaint<AccountControl>> Refusal(const AccountSettings& account, std::string_view kept_for) const;

 private:
  bool Has(AccountKey key) const { return changed_.test(static_cast<std::size_t>(key)); }
  bool HasOneOf(std::span<const AccountKey> keys) const {
    return std::any_of(keys.begin(), keys.end(), [this](AccountKey key) { return Has(key); });
  }
  bool ChangesSignIn() const;

  AccountSettings wanted_;
  std::bitset<static_cast<std::size_t>(AccountKey::kCount)> changed_;
};

// `why` refuses what became of a change that was right when it was made.
Error ChangedMeanwhile(const Complaint<AccountControl>& why);

}  // namespace quillcast::account
