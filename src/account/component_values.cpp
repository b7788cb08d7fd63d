#include "account/component_values.h"

namespace quillcast::account {
namespace {

int AuthModeNumber(std::string_view mode) {
  if (mode == "CRAM MD5") return 2;
  return mode == "NTLM" ? 4 : 1;
}

std::optional<int> OptionWord(bool no_auth, bool extended) {
  if (!no_auth && !extended) return {};
  return (no_auth ? 256 : 0) + (extended ? 16 : 0);
}

}  // namespace

ComponentValues ComponentValuesOf(const AccountSettings& account, ThreadMode smtp) {
  return {.auth_mode = AuthModeNumber(account[AccountKey::kAuthMode]),
          .options = OptionWord(account.IsOn(AccountKey::kNoAuth), account.IsOn(AccountKey::kExtended)),
          .timeout_seconds = account.TimeoutSeconds(),
          .threading = ComponentValue(smtp)};
}

}  // namespace quillcast::account
