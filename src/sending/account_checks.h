// What refuses an account before it is saved.
#pragma once

#include <optional>

#include "platform/complaint.h"
#include "sending/account_settings.h"

namespace quillcast::sending {

// The checks in their order; the first that fails. The refusal of the sender's address has no message.
std::optional<Complaint> CheckAccount(const AccountSettings& account);

}  // namespace quillcast::sending
