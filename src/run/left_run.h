// The runs of the window that ended before their end, though nobody chose that: the system ended the program, or the
// network stayed away. Their own end was orderly, so that they are offered at the next start as those that were cut off
// are.
#pragma once

#include <vector>

#include "profile/settings_store.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// One more; only so many are kept, the last.
Result<void> KeepLeftRun(profile::SettingsStore& settings, RunId run);
// None where the settings cannot be read.
std::vector<RunId> LeftRuns(const profile::SettingsStore& settings);

}  // namespace quillcast::run
