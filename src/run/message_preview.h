// The preview of the message as a run would send it, with its merge tags left as they are.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "account/account_settings.h"
#include "document/message_document.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "profile/folders.h"
#include "profile/settings_store.h"

namespace quillcast::run {

struct Preview {
  std::filesystem::path file;      // Preview.eml in the temporary folder; for HTML, Preview.htm stands beside it
  std::vector<std::string> notes;  // about pictures that could not be taken along, and those that go along
  std::vector<std::filesystem::path> pictures;  // that go along
};

Result<Preview> WritePreview(const profile::Folders& folders, const profile::SettingsStore& settings,
                             const document::MessageDocument& document, const account::AccountSettings& account,
                             const platform::Clock& clock, platform::Entropy& entropy);

}  // namespace quillcast::run
