// The report that goes along with every support request: this computer and the program's settings, as labelled lines.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/result.h"
#include "platform/secret.h"
#include "profile/settings_store.h"
#include "support/system_facts.h"

namespace quillcast::support {

// A CRLF after each line. A setting that is not stored has the value that its readers take then; a value is one line,
// cut behind 1,000 bytes. The account's password is not among them: a value that holds it or `password`, which is the
// account's where it is kept elsewhere and known, or is it where that has one or two letters, stands as "***"; so does
// what is a secret of its own (see WithoutSecret), and the user's name where the password is kept elsewhere: some take
// one token for both. Fails where the settings cannot be read.
Result<std::string> SystemReport(const SystemFacts& facts, const std::filesystem::path& install_path,
                                 const profile::SettingsStore& settings, const platform::Secret& password);

// Where a secret may stand in a setting: in front of a server's name, or only in a whole address ("ftp://ada:x@host/").
enum class SecretPlace { kBeforeServer, kInAddress };

// What stands before the "@" there, which may be a user's name and password, as "***". Rather too much than too little:
// up to the last "@", since a password may hold any character.
std::string WithoutSecret(std::string_view value, SecretPlace place);

}  // namespace quillcast::support
