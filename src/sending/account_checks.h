// What refuses an account before it is saved.
#pragma once

#include <optional>

#include "platform/complaint.h"
#include "sending/account_settings.h"

namespace quillcast::sending {

// The width of wrapped lines, in characters; both are allowed.
inline constexpr int kNarrowestWrap = 32;
inline constexpr int kWidestWrap = 128;

// The checks in their order; the first that fails. The refusal of the sender's address has no message.
std::optional<Complaint> CheckAccount(const AccountSettings& account);

}  // namespace quillcast::sending
