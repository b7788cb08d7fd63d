// What every window is given: the folders, the settings and the ports.
#pragma once

#include "app/folders.h"
#include "app/settings_store.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/entropy.h"
#include "platform/power.h"
#include "platform/prompts.h"

namespace quillcast::app {

struct Program {
  const Folders& folders;
  SettingsStore& settings;
  platform::Prompts& prompts;
  platform::Desktop& desktop;
  platform::Power& power;
  const platform::Clock& clock;
  platform::Entropy& entropy;
};

}  // namespace quillcast::app
