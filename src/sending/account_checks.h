// What refuses an account before it is saved.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/complaint.h"
#include "sending/account_settings.h"

namespace quillcast::sending {

// The checks in their order; the first that fails. The refusal of the sender's address has no message.
std::optional<Complaint> CheckAccount(const AccountSettings& account);

// The decimal value of a text of ASCII digits alone, leading zeros allowed, when it lies within the bounds. A sign, a
// blank, a fraction or a digit of another script make it no number.
std::optional<std::int64_t> WholeNumberBetween(std::string_view text, std::int64_t low, std::int64_t high);

}  // namespace quillcast::sending
