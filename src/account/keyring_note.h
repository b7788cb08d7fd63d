// What the settings remember of the keyring, beside the account, whose reset and whose import leave it.
#pragma once

#include <string>

#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::account {

inline constexpr const char* kKeyringSection = "Keyring";
inline constexpr const char* kKeptForKey = "Entry";
inline constexpr const char* kLeftoverKey = "Leftover";  // "1" or empty

struct KeyringNote {
  std::string kept_for;       // whom it has the account's password for, as WhomOf says; empty where it has none
  bool has_leftover = false;  // it kept what it should have deleted, and the person knows
};

inline bool IsEmpty(const KeyringNote& note) { return note.kept_for.empty() && !note.has_leftover; }

// Nothing is remembered by settings that cannot be read.
KeyringNote KeyringNoteOf(const profile::SettingsStore& settings);
Result<void> Remember(const KeyringNote& note, profile::SettingsStore& settings);

}  // namespace quillcast::account
