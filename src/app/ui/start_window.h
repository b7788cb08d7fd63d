// The way from the splash to the main window that can be used.
#pragma once

#include <memory>

#include "app/program.h"
#include "app/ui/main_form.h"

namespace quillcast::app {

// Loads the main window, behind the splash where the setting `Options` `Splash` does not switch it off, and shows it a
// second later, with the tips. The editor's engine starts within that second. Returns before the window is shown.
std::unique_ptr<MainForm> StartWindow(const Program& program);

}  // namespace quillcast::app
