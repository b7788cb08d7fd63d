// What every window is given: the folders, the settings and the ports.
#pragma once

#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/entropy.h"
#include "platform/power.h"
#include "platform/prompts.h"
#include "platform/secret_store.h"
#include "platform/sqlite.h"
#include "profile/folders.h"
#include "profile/settings_store.h"

namespace quillcast::profile {

// What the window itself asks of the stores waits for no lock longer than a person notices; the failure is told, and
// what has more time runs beside the window.
inline constexpr platform::LockPatience kWindowPatience{.lock_wait = std::chrono::milliseconds(50)};

// What they refer to outlives every window.
struct Program {
  const Folders& folders;
  SettingsStore& settings;
  platform::Prompts& prompts;
  platform::Desktop& desktop;
  platform::Power& power;
  const platform::Clock& clock;
  platform::Entropy& entropy;
  platform::SecretStore& keyring;
};

}  // namespace quillcast::profile
