// What the stored text of a key with choices means.
#pragma once

#include <cstddef>

#include "account/account_settings.h"
#include "platform/result.h"

namespace quillcast::account {

// The position of the stored text among the choices of its key, where the position is the meaning. Fails with
// kNotConfigured for a text that is none of them, naming those there are.
Result<std::size_t> ChoiceOf(const AccountSettings& account, AccountKey key);

// The same as an enum that counts in the order of the choices.
template <typename Enum>
Result<Enum> ChosenAs(const AccountSettings& account, AccountKey key) {
  const auto choice = ChoiceOf(account, key);
  if (!choice) return choice.error();
  return static_cast<Enum>(*choice);
}

}  // namespace quillcast::account
