// prefs.js and user.js: lines of user_pref("name", value);
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quillcast::account {

// Text without its quotes and escapes; numbers, true and false as they stand there.
using Preferences = std::map<std::string, std::string, std::less<>>;

// Puts those whose names begin with `prefix` among `preferences`, each in the place of one that was there. What is
// damaged is passed over up to the next line that begins one. False where there was such.
bool ReadPreferences(std::string_view file, std::string_view prefix, Preferences& preferences);

}  // namespace quillcast::account
