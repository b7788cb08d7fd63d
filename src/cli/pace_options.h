// How fast a run goes, as send and runs resume|retry take it. What is not given is as the account says.
#pragma once

#include <CLI/CLI.hpp>

#include "cli/context.h"
#include "run/pace/pace_rules.h"
#include "run/prepared_run.h"

namespace quillcast::cli {

struct PaceOptions {
  run::PaceTexts texts;

  bool IsAsked() const { return texts != run::PaceTexts{}; }
};

// How fast that lets a run go; says where a time to begin is over. kUsage for an option that can do nothing, and as
// PreparedRun::Pace fails.
Result<run::RunPace> TakePace(Context& context, const PaceOptions& options, run::PreparedRun& prepared);

void AddPaceOptions(CLI::App& command, PaceOptions& options);

}  // namespace quillcast::cli
