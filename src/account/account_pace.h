// How fast the account lets messages go out.
#pragma once

#include <optional>

#include "account/account_settings.h"
#include "run/pace/pace_rules.h"

namespace quillcast::account {

// As they are stored; an empty one is none.
run::PaceTexts PaceTextsOf(const AccountSettings& account);

struct PaceFault {
  AccountKey key;
  Error error;
};
// The first of them that cannot be read.
std::optional<PaceFault> FaultInPace(const AccountSettings& account);

}  // namespace quillcast::account
