// What refuses an account before it is saved.
#pragma once

#include <optional>
#include <string_view>

#include "account/account_form.h"
#include "account/account_settings.h"
#include "platform/complaint.h"

namespace quillcast::account {

// Whether an account takes it as its sender's address.
bool IsSenderAddress(std::string_view email);

// The checks in their order; the first that fails. The refusals of the sender's address, of a name or address that
// holds what is not seen, of a server list that cannot be read, of a missing password command and of a password that
// the keyring has for somebody else than `kept_for` have no message, but a reason.
std::optional<Complaint<AccountControl>> CheckAccount(const AccountSettings& account, std::string_view kept_for);

}  // namespace quillcast::account
