#include "account/account_choices.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/text.h"

namespace quillcast::account {

Result<std::size_t> ChoiceOf(const AccountSettings& account, AccountKey key) {
  const auto& row = RowOf(key);
  const auto found = std::find(row.choices.begin(), row.choices.end(), account[key]);
  if (found != row.choices.end()) return static_cast<std::size_t>(found - row.choices.begin());
  return Error{
      Failure::kNotConfigured,
      Say("The account's {} is \"{}\", which is none of its choices.", row.name, platform::Printable(account[key], 80)),
      Say("Choose one: {}.", fmt::to_string(fmt::join(row.choices, ", ")))};
}

}  // namespace quillcast::account
