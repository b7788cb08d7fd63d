#include "message/component_values.h"

namespace quillcast::message {
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

ComponentValues ComponentValuesOf(const account::AccountSettings& account, account::ThreadMode smtp) {
  return {
      .auth_mode = AuthModeNumber(account[account::AccountKey::kAuthMode]),
      .options = OptionWord(account.IsOn(account::AccountKey::kNoAuth), account.IsOn(account::AccountKey::kExtended)),
      .timeout_seconds = account.TimeoutSeconds(),
      .threading = account::ComponentValue(smtp)};
}

}  // namespace quillcast::message
