// The preview of the message as a run would send it, with its merge tags left as they are.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/folders.h"
#include "app/settings_store.h"
#include "compose/message_document.h"
#include "platform/clock.h"
#include "platform/entropy.h"
#include "sending/account_settings.h"

namespace quillcast::sending {

struct Preview {
  std::filesystem::path file;      // Preview.eml in the temporary folder; for HTML, Preview.htm stands beside it
  std::vector<std::string> notes;  // about pictures that could not be taken along, and those that go along
  std::vector<std::filesystem::path> pictures;  // that go along
};

Result<Preview> WritePreview(const app::Folders& folders, const app::SettingsStore& settings,
                             const compose::MessageDocument& document, const AccountSettings& account,
                             const platform::Clock& clock, platform::Entropy& entropy);

}  // namespace quillcast::sending
