#include "account/keyring_note.h"

#include <array>

namespace quillcast::account {

KeyringNote KeyringNoteOf(const profile::SettingsStore& settings) {
  constexpr std::array<profile::SettingName, 2> kNames = {
      {{kKeyringSection, kKeptForKey, ""}, {kKeyringSection, kLeftoverKey, ""}}};
  const auto values = IgnoreErrors(settings.ReadAll(kNames), {"", ""});
  return {.kept_for = values[0], .has_leftover = values[1] == "1"};
}

Result<void> Remember(const KeyringNote& note, profile::SettingsStore& settings) {
  if (IsEmpty(note)) return settings.DeleteSection(kKeyringSection);
  const std::array<profile::SettingValue, 2> values = {
      {{kKeptForKey, note.kept_for}, {kLeftoverKey, note.has_leftover ? "1" : ""}}};
  return settings.WriteAll(kKeyringSection, values);
}

}  // namespace quillcast::account
