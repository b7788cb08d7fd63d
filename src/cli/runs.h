// What the commands on kept runs share.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "cli/context.h"
#include "run/kept_runs.h"

namespace quillcast::cli {

// Adds `runs resume` and `runs retry`; `runs export` and `runs report`; `runs forget`.
void AddGoOnCommands(CLI::App& runs, Context& context);
void AddTakeOutCommands(CLI::App& runs, Context& context);
void AddForgetCommand(CLI::App& runs, Context& context);

// Gives an action the journal of this user; its failure, or one to open it, ends the command.
template <typename Action>
int WithJournal(Context& context, const profile::Folders& folders, Action action) {
  const auto journal = run::OpenJournal(folders, context.clock, context.cancel);
  if (!journal) return context.output.Fail(journal.error());
  const Result<int> done = action(**journal);
  context.output.EndProgress();
  return done ? *done : context.output.Fail(done.error());
}

// "#12": how a run is named on the command line.
Result<run::MailingEntry> MailingOf(run::RunJournal& journal, std::int64_t run);

}  // namespace quillcast::cli
