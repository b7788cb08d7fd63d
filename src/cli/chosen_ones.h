// Whom a command on a kept run is about, as it was typed.
#pragma once

#include <string>

#include "cli/context.h"
#include "run/kept_runs.h"
#include "run/skipped_ones.h"

namespace quillcast::cli {

struct ChosenOnes {
  std::string states;   // by their names, parted by commas: "refused,not tried"; empty for all
  std::string replies;  // by the beginnings of their codes; empty for any
};

// Adds --reply; --state differs from command to command.
void AddReplyOption(CLI::App& command, ChosenOnes& chosen);
// What --state takes, for its help.
std::string StateNames();

struct Choice {
  run::RecipientChoice rows;
  bool skipped = false;  // those as well of whom there are no rows
};

// kUsage for what is no state, or begins no code.
Result<Choice> ChoiceFrom(const ChosenOnes& chosen);

}  // namespace quillcast::cli
