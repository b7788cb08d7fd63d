#include "mail_file/load_settings.h"

namespace quillcast::mail_file {

Result<LoadMode> LoadModeOf(const profile::SettingsStore& settings) {
  const auto extended = settings.Read("Account", "Extended", "0");
  if (!extended) return extended.error();
  return *extended == "1" ? LoadMode::kExtended : LoadMode::kPlain;
}

std::string_view LoadWarning(const Loading& loading) { return TextOf(loading.code()); }

}  // namespace quillcast::mail_file
