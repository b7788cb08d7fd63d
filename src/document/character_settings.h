// The character set that the account's messages are written in.
#pragma once

#include <string_view>

#include "platform/result.h"
#include "profile/settings_store.h"

namespace quillcast::document {

// The name in a message for the stored `Account` `CharSet`, "Windows-1252" when none is stored. Empty when the stored
// text is the name of no row, to the letter.
Result<std::string_view> CharacterSettings(const profile::SettingsStore& settings);

}  // namespace quillcast::document
