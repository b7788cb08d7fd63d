// The run that the window was sending when the system ended the program: its own end was orderly, and nobody chose it,
// so that it is offered at the next start as one that was cut off is.
#pragma once

#include <optional>

#include "profile/settings_store.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

Result<void> KeepLeftRun(profile::SettingsStore& settings, RunId run);
// Nothing where there is none, or where the settings cannot be read.
std::optional<RunId> LeftRun(const profile::SettingsStore& settings);

}  // namespace quillcast::run
