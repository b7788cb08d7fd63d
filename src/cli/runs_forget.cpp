// quillcast runs forget
#include <algorithm>

#include "cli/commands.h"
#include "cli/runs.h"
#include "cli/store_command.h"
#include "run/damaged_runs.h"

namespace quillcast::cli {
namespace {

struct ForgetOptions {
  std::int64_t run = 0;
  bool finished = false;
  bool damaged = false;
};

Result<int> ForgetAllDamaged(Context& context, run::RunJournal& journal) {
  const auto damaged = run::FindDamaged(journal);
  if (!damaged) return damaged.error();
  if (!damaged->empty()) {
    if (const auto asked = AskFirst(context, run::ForgetQuestion(*damaged)); !asked) return asked.error();
  }
  const auto all = run::ForgetDamaged(journal, *damaged);
  if (all.forgotten > 0) context.output.Line(run::DamagedAreForgotten(all.forgotten).InEnglish());
  if (damaged->empty()) context.output.Line("No run is damaged.");
  context.output.Object({{"forgotten", all.forgotten}});
  return all.stays ? Result<int>(*all.stays) : 0;
}

Result<int> ForgetDamagedOne(Context& context, run::RunJournal& journal, std::int64_t run) {
  const auto mailing = journal.MailingOf(run);
  if (!mailing) return mailing.error();
  const auto kept = journal.List();
  if (!kept) return kept.error();
  const auto same = std::ranges::find(kept->damaged, *mailing, &run::DamagedMailing::id);
  const auto damaged = same == kept->damaged.end() ? run::DamagedMailing{*mailing, run} : *same;
  if (const auto asked = AskFirst(context, run::ForgetQuestion(damaged)); !asked) return asked.error();
  if (const auto gone = journal.Forget(*mailing); !gone) return gone.error();
  context.output.Line(Say("Run #{} was forgotten.", run).InEnglish());
  context.output.Object({{"forgotten", 1}});
  return 0;
}

Result<int> ForgetOne(Context& context, const profile::Folders& folders, run::RunJournal& journal, std::int64_t run) {
  const auto mailing = MailingOf(journal, run);
  if (!mailing && mailing.error().failure == Failure::kBadData) return ForgetDamagedOne(context, journal, run);
  if (!mailing) return mailing.error();
  if (!run::WhatIsLeft(*mailing).empty() && run::StandingOf(*mailing) != run::MailingStanding::kGoesOn) {
    if (const auto asked = AskFirst(context, run::ForgetQuestion(*mailing)); !asked) return asked.error();
  }
  if (const auto gone = journal.Forget(mailing->id); !gone) return gone.error();
  context.output.Line(run::WhatIsForgotten(*mailing, run, folders.History()).InEnglish());
  context.output.Object({{"forgotten", 1}});
  return 0;
}

Result<int> ForgetFinished(Context& context, run::RunJournal& journal) {
  const auto forgotten = run::ForgetFinished(journal);
  if (!forgotten) return forgotten.error();
  const auto went = run::WhatWentOf(*forgotten);
  context.output.Line(went ? went->InEnglish() : "No run was forgotten.");
  context.output.Object({{"forgotten", forgotten->mailings},
                         {"forgotten_unknown", forgotten->unknown},
                         {"kept", forgotten->kept.size()},
                         {"damaged", forgotten->damaged.size()}});
  for (const auto& sentence : run::WhatStayed(*forgotten)) {
    context.output.Note(sentence.InEnglish());
  }
  return 0;
}

int RunForget(Context& context, const ForgetOptions& options) {
  if (int{options.run != 0} + int{options.finished} + int{options.damaged} != 1) {
    return context.output.Complain("Name one run, or --finished, or --damaged.");
  }
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  return WithJournal(context, *folders, [&](run::RunJournal& journal) -> Result<int> {
    if (options.finished) return ForgetFinished(context, journal);
    if (options.damaged) return ForgetAllDamaged(context, journal);
    return ForgetOne(context, *folders, journal, options.run);
  });
}

}  // namespace

void AddForgetCommand(CLI::App& runs, Context& context) {
  auto* forget =
      runs.add_subcommand("forget", "Delete what is kept of a run: its message, its recipients, its results");
  auto options = std::make_shared<ForgetOptions>();
  forget->add_option("run", options->run, "The number that runs list shows");
  forget->add_flag("--finished", options->finished,
                   "All finished runs; what runs list calls damaged is not among them");
  forget->add_flag("--damaged", options->damaged, "All runs of which something can no longer be read");
  forget->footer("The report in the history stays.\nExample:\n  quillcast runs forget 12");
  OnRun(*forget, context, [options](Context& c) { return RunForget(c, *options); });
}

}  // namespace quillcast::cli
