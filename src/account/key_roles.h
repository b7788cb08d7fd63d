// What each of the account's settings decides: what a message is, or how it gets to the server.
#pragma once

#include <cstdint>

#include "account/account_settings.h"

namespace quillcast::account {

enum class KeyRole : std::uint8_t {
  kTheMessage,  // what the messages are, envelopes included
  kTheServer,   // whom they are handed to
  kTheWay,      // how: signing in, and its secrets, security, patience and pace
};
KeyRole RoleOf(AccountKey key);

// The account `present`, with what its messages are out of `other`: for messages that must stay as they were while the
// way to the server may be another one by now.
AccountSettings WithMessageOf(AccountSettings present, const AccountSettings& other);

}  // namespace quillcast::account
