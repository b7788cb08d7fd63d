// quillcast runs resume|retry: a kept run goes on with those who are left, or tries some of them again.
#include <fmt/format.h>

#include "cli/chosen_ones.h"
#include "cli/pace_options.h"
#include "cli/runs.h"
#include "cli/send_run.h"
#include "cli/send_steps.h"
#include "platform/text.h"
#include "run/prepared_run.h"

namespace quillcast::cli {
namespace {

using run::ResultState;

const std::string kExitCodes =
    "Exit codes: 0 all sent; 1 some failed; 66 nobody is left or in these states; 75 interrupted, given up as send "
    "does, or another program has the run in hand; others: why is told on standard error.";

struct GoOnOptions {
  std::int64_t run = 0;
  bool include_unknown = false;
  ChosenOnes whom;
  MailingOptions mailing;
  PaceOptions pace;
};

// What a person should know before the first message goes out.
Result<std::vector<Sentence>> WhatToKnow(run::PreparedRun& prepared) {
  auto changed = prepared.WhatChangedSince();
  if (!changed) return changed.error();
  const auto pace = prepared.PaceInWords();
  if (!pace) return pace.error();
  if (*pace) changed->push_back(**pace);
  return changed;
}

int GoOn(Context& context, run::RunKind kind, const run::RecipientChoice& choice, const GoOnOptions& options) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  auto prepared = run::PrepareToGoOn(options.run, kind, choice, PlaceOf(context, *folders));
  if (!prepared && prepared.error().failure == Failure::kNoInput) {
    return WithJournal(context, *folders, [&](run::RunJournal& journal) -> Result<int> {
      const auto mailing = MailingOf(journal, options.run);
      return mailing ? prepared.error() : mailing.error();
    });
  }
  if (!prepared) return context.output.Fail(prepared.error());
  const auto pace = TakePace(context, options.pace, *prepared);
  if (!pace) return context.output.Fail(pace.error());
  if (prepared->group().recipients == 0) {
    return WithJournal(context, *folders, [&](run::RunJournal& journal) -> Result<int> {
      const auto mailing = MailingOf(journal, options.run);
      return mailing ? run::NobodyOf(choice, *mailing) : mailing.error();
    });
  }
  const auto to_know = WhatToKnow(*prepared);
  if (!to_know) return context.output.Fail(to_know.error());
  return RunMailing(context, *folders, *prepared, {}, {{}, *to_know}, options.mailing);
}

// Also with those who were to be tried again, and where it is told how often, with all who may be.
int RunResume(Context& context, const GoOnOptions& options) {
  const auto retries = run::ReadRetries(options.pace.texts.retries);
  if (!retries) return context.output.Fail(retries.error());
  run::RecipientChoice choice = run::WhoIsLeft();
  choice.tried_again = options.pace.texts.retries.empty();
  if (retries->value_or(0) > 0) choice.states |= run::WhoMayBeReached();
  if (options.include_unknown) choice.states |= run::SetOf({ResultState::kUnknown});
  return GoOn(context, run::RunKind::kResume, choice, options);
}

// Nobody gets it twice by this: who is sent, or may have it already, is no choice here.
int RunRetry(Context& context, const GoOnOptions& options) {
  ChosenOnes whom = options.whom;
  if (whom.states.empty()) whom.states = whom.replies.empty() ? "deferred,failed" : "deferred,refused";
  const auto choice = ChoiceFrom(whom);
  if (!choice) return context.output.Fail(choice.error());
  if (choice->skipped || (choice->rows.states & ~run::WhoDidNotGetIt()).any()) {
    return context.output.Fail({Failure::kUsage, "Only deferred, refused and failed recipients can be tried again.",
                                "quillcast runs resume goes on with those not tried, and has --include-unknown."});
  }
  return GoOn(context, run::RunKind::kRetry, choice->rows, options);
}

}  // namespace

void AddGoOnCommands(CLI::App& runs, Context& context) {
  const auto shared = [](CLI::App& command, GoOnOptions& options) {
    command.add_option("run", options.run, "The number that runs list shows")->required();
    AddPaceOptions(command, options.pace);
    command.add_flag("--keep-going", options.mailing.keep_going,
                     "Try every recipient, even where the server keeps refusing the sign-in or the sender");
  };
  auto* resume =
      runs.add_subcommand("resume", "Go on with a run: send to those who were not tried, or were to be tried again");
  auto resumed = std::make_shared<GoOnOptions>();
  shared(*resume, *resumed);
  resume->add_flag("--include-unknown", resumed->include_unknown,
                   "Also to those whose message was out without an answer: some of them may get it twice");
  resume->footer(
      "With --retries it goes on, too, with all who were deferred or could not be reached.\n"
      "The message, its attachments and the list are those of the run, whatever became of them since, and so are the "
      "options of pace and retries that it had; one of this command comes before them. Where neither says anything the "
      "account does, as it is now, its server and its password included. A time of --at that is still ahead is waited "
      "for; --at none sends at once.\n"
      "Example:\n  quillcast runs resume 12\n\n" +
      kExitCodes);
  OnRun(*resume, context, [resumed](Context& c) { return RunResume(c, *resumed); });

  auto* retry = runs.add_subcommand(
      "retry", "Send again to those who were deferred, who failed, or who were refused for some reasons");
  auto retried = std::make_shared<GoOnOptions>();
  shared(*retry, *retried);
  retry
      ->add_option(
          "--state", retried->whom.states,
          "Whom, parted by commas: deferred, refused, failed; without it the deferred and the failed, or, with "
          "--reply, the deferred and the refused")
      ->type_name("STATES");
  AddReplyOption(*retry, retried->whom);
  retry->footer(
      "Everybody has as many retries as at first; the rest is as runs resume has it.\nExamples:\n  quillcast runs "
      "retry 12 --state deferred\n  quillcast runs retry 12 --reply 452,5.2.2\n\n" +
      kExitCodes);
  OnRun(*retry, context, [retried](Context& c) { return RunRetry(c, *retried); });
}

}  // namespace quillcast::cli
