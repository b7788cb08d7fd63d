// What refuses an account before it is saved.
#pragma once

#include <optional>

#include "account/account_settings.h"
#include "platform/complaint.h"

namespace quillcast::account {

// The width of wrapped lines, in characters; both are allowed.
inline constexpr int kNarrowestWrap = 32;
inline constexpr int kWidestWrap = 128;

// The checks in their order; the first that fails. The refusals of the sender's address and of a server list that
// cannot be read have no message; that of the list has its reason.
std::optional<Complaint> CheckAccount(const AccountSettings& account);

}  // namespace quillcast::account
