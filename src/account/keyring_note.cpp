#include "account/keyring_note.h"

#include <array>

namespace quillcast::account {
namespace {

constexpr const char* kSection = "Keyring";
constexpr const char* kKeptFor = "Entry";
constexpr const char* kLeftover = "Leftover";

}  // namespace

KeyringNote KeyringNoteOf(const profile::SettingsStore& settings) {
  return {.kept_for = IgnoreErrors(settings.Read(kSection, kKeptFor, ""), std::string()),
          .has_leftover = IgnoreErrors(settings.Read(kSection, kLeftover, ""), std::string()) == "1"};
}

Result<void> Remember(const KeyringNote& note, profile::SettingsStore& settings) {
  if (note.kept_for.empty() && !note.has_leftover) return settings.DeleteSection(kSection);
  const std::array<profile::SettingValue, 2> values = {
      {{kKeptFor, note.kept_for}, {kLeftover, note.has_leftover ? "1" : ""}}};
  return settings.WriteAll(kSection, values);
}

}  // namespace quillcast::account
