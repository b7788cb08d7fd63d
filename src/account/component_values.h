// The account in the numbers that the mail component is configured with.
#pragma once

#include <optional>

#include "account/account_settings.h"
#include "account/thread_modes.h"

namespace quillcast::account {

// For people to see (account show); our own client takes smtp::ClientOptions.
struct ComponentValues {
  int auth_mode = 1;           // "AUTH LOGIN" 1, "CRAM MD5" 2, "NTLM" 4; any other text counts as the first
  std::optional<int> options;  // 256 for NoAuth and 16 for Extended; left alone when both are off
  int timeout_seconds = 60;    // 60 to 600
  int threading = 1;           // of SMTP
};

// `smtp` is a setting of its own, see ThreadModes.
ComponentValues ComponentValuesOf(const AccountSettings& account, ThreadMode smtp);

}  // namespace quillcast::account
