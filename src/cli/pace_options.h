// How fast a run goes, as send and runs resume|retry take it. What is not given is as the account says.
#pragma once

#include <CLI/CLI.hpp>

#include "run/pace/pace_rules.h"

namespace quillcast::cli {

struct PaceOptions {
  run::PaceTexts texts;

  bool IsAsked() const { return texts != run::PaceTexts{}; }
};

void AddPaceOptions(CLI::App& command, PaceOptions& options);

}  // namespace quillcast::cli
