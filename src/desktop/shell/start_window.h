// The way from the splash to the main window that can be used.
#pragma once

#include <memory>

#include "desktop/shell/main_form.h"
#include "profile/program.h"

namespace quillcast::desktop {

// Loads the main window, behind the splash where the setting `Options` `Splash` does not switch it off, and shows it a
// second later, with the tips. The editor's engine starts within that second. Returns before the window is shown.
std::unique_ptr<MainForm> StartWindow(const profile::Program& program);

}  // namespace quillcast::desktop
