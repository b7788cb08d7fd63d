// quillcast runs list|show|resume|retry|export|forget|report
#include "cli/runs.h"

#include <fmt/format.h>

#include "cli/chosen_ones.h"
#include "cli/commands.h"
#include "cli/store_command.h"
#include "platform/text.h"
#include "run/damaged_runs.h"
#include "run/run_words.h"
#include "smtp/outcome_text.h"

namespace quillcast::cli {
namespace {

constexpr std::size_t kLongestSubject = 60;
constexpr std::size_t kLongestAddress = 100;

struct ShowOptions {
  std::int64_t run = 0;
  ChosenOnes whom;
};

const char* WordOf(run::RunKind kind) {
  switch (kind) {
    case run::RunKind::kFirst:
      return "send";
    case run::RunKind::kResume:
      return "resume";
    case run::RunKind::kRetry:
      break;
  }
  return "retry";
}

// As the line of a run has it, whose mailing may be finished by the runs behind it.
const char* TextOf(run::RunStanding standing) {
  switch (standing) {
    case run::RunStanding::kGoesOn:
      return ", this run goes on";
    case run::RunStanding::kEnded:
      return "";
    case run::RunStanding::kCutOff:
      break;
  }
  return ", this run was cut off";
}

nlohmann::ordered_json AsObject(const run::MailingEntry& mailing, const run::RunEntry& run,
                                const std::optional<run::SkippedOnes>& skipped, const platform::Clock& clock) {
  nlohmann::ordered_json object = {{"run", run.id},
                                   {"mailing", mailing.runs.front().id},
                                   {"kind", WordOf(run.kind)},
                                   {"began", run::MomentText(run.began, clock)},
                                   {"standing", run::Name(run.standing)},
                                   {"recipients", run.recipients},
                                   {"history", run.history}};
  if (run.kind != run::RunKind::kFirst) return object;
  object["subject"] = mailing.subject;
  object["group"] = mailing.group;
  object["mailing_standing"] = run::Name(run::StandingOf(mailing));
  for (std::size_t n = 0; n < run::kResultStates; ++n) {
    object[run::Name(static_cast<run::ResultState>(n))] = mailing.counts[n];
  }
  object[run::kSkipped] = skipped ? nlohmann::ordered_json(skipped->count()) : nlohmann::ordered_json();
  object["not_tried_again"] = mailing.tried_again;
  return object;
}

// A mailing by its first run, and those that went on with it below.
void ShowMailing(const Context& context, const run::MailingEntry& mailing,
                 const std::optional<run::SkippedOnes>& skipped) {
  for (const run::RunEntry& run : mailing.runs) {
    const bool is_first = run.kind == run::RunKind::kFirst;
    const std::string what =
        is_first ? fmt::format("\"{}\" to {}", platform::Printable(mailing.subject, kLongestSubject), mailing.group)
                 : WordOf(run.kind);
    context.output.Line(
        fmt::format("{}#{}  {}  {}, {}{}", is_first ? "" : "    ", run.id, run::MomentText(run.began, context.clock),
                    what, platform::Counted(run.recipients, "recipient", "recipients"), TextOf(run.standing)));
    context.output.Object(AsObject(mailing, run, skipped, context.clock));
  }
  const std::string left_out = !skipped || skipped->count() == 0
                                   ? ""
                                   : fmt::format(", {} {}", platform::WithThousands(skipped->count()), run::kSkipped);
  context.output.Line(fmt::format("    the mailing {}{}", run::StandingText(mailing), left_out));
}

int RunList(Context& context) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  return WithJournal(context, *folders, [&](run::RunJournal& journal) -> Result<int> {
    const auto kept = journal.List();
    if (!kept) return kept.error();
    for (const auto& mailing : kept->mailings) {
      const auto skipped = run::SkippedOf(journal, mailing);
      if (!skipped) return skipped.error();
      ShowMailing(context, mailing, *skipped);
    }
    if (const auto whole = run::CheckIsWhole(*kept); !whole) return whole.error();
    if (kept->mailings.empty()) context.output.Note("There is no run in the journal yet.");
    return 0;
  });
}

void ShowRow(const Context& context, const run::JournalRow& row) {
  const std::string why = smtp::ReplyAndReason(row.reply, platform::Printable(row.reason));
  context.output.Line(fmt::format("#{} {}: {}{}", row.position,
                                  platform::Printable(row.recipient.email(), kLongestAddress), run::StandingOf(row),
                                  why.empty() ? "" : ". " + why));
  nlohmann::ordered_json object = {{"position", row.position},
                                   {"address", row.recipient.email()},
                                   {"state", run::Name(row.state)},
                                   {"code", row.code},
                                   {"reply", smtp::ReplyText(row.reply)},
                                   {"reason", row.reason},
                                   {"attempts", row.attempts},
                                   {"again", row.again}};
  if (row.when) object["time"] = run::MomentText(*row.when, context.clock);
  context.output.Object(object);
}

// Gives how many they are.
Result<std::int64_t> ShowRows(const Context& context, run::RunJournal& journal, const run::MailingEntry& mailing,
                              const run::RecipientChoice& choice) {
  std::int64_t rows = 0;
  const auto shown = journal.Visit(mailing.id, choice, 0, [&](const run::JournalRow& row) -> Result<bool> {
    ++rows;
    ShowRow(context, row);
    return IsWanted(context);
  });
  return shown ? Result(rows) : shown.error();
}

int RunRunsShow(Context& context, const ShowOptions& options) {
  const auto choice = ChoiceFrom(options.whom);
  if (!choice) return context.output.Fail(choice.error());
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  return WithJournal(context, *folders, [&](run::RunJournal& journal) -> Result<int> {
    const auto mailing = MailingOf(journal, options.run);
    if (!mailing) return mailing.error();
    const auto skipped = run::SkippedOf(journal, *mailing);
    if (!skipped) return skipped.error();
    ShowMailing(context, *mailing, *skipped);
    const auto shown = ShowRows(context, journal, *mailing, choice->rows);
    if (!shown) return shown.error();
    const bool asks_for_some = !options.whom.states.empty() || !options.whom.replies.empty();
    if (*shown == 0 && asks_for_some && choice->rows.states.any()) {
      context.output.Note(run::NobodyOf(choice->rows, *mailing).what.InEnglish());
    }
    if (choice->skipped || (!asks_for_some && (!*skipped || (*skipped)->count() > 0))) {
      context.output.Note(run::WhoWasSkipped(*skipped).InEnglish());
    }
    if (!asks_for_some) {
      for (const auto& sentence : run::WhatIsLeft(*mailing)) context.output.Note(sentence.InEnglish());
    }
    if (const auto whole = EndOfList(context); !whole) return whole.error();
    return 0;
  });
}

}  // namespace

Result<run::MailingEntry> MailingOf(run::RunJournal& journal, std::int64_t run) {
  auto mailing = journal.Find(run);
  if (mailing || mailing.error().failure != Failure::kNoInput) return mailing;
  return Error{Failure::kNoInput, Say("There is no run #{}.", run), "quillcast runs list shows them."};
}

void AddRunsCommand(CLI::App& app, Context& context) {
  auto* runs = app.add_subcommand("runs", "Runs and what became of every recipient; go on with one that was cut off");
  runs->require_subcommand(1);

  auto* list = runs->add_subcommand("list", "The runs, newest first, each with those that went on with it below");
  list->footer("Example:\n  quillcast runs list");
  OnRun(*list, context, RunList);

  auto* show = runs->add_subcommand("show", "What became of each recipient of a run");
  auto shown = std::make_shared<ShowOptions>();
  show->add_option("run", shown->run, "The number that runs list shows")->required();
  show->add_option("--state", shown->whom.states, "Only these, parted by commas: " + StateNames())->type_name("STATES");
  AddReplyOption(*show, shown->whom);
  show->footer(
      "\"unknown\": the message was out and no answer came, so it may have arrived. \"skipped\": outside the part of "
      "the "
      "list that was asked for; their places are told, their rows are not kept.\n"
      "Example:\n  quillcast runs show 12 --state refused,deferred");
  OnRun(*show, context, [shown](Context& c) { return RunRunsShow(c, *shown); });

  AddGoOnCommands(*runs, context);
  AddTakeOutCommands(*runs, context);
  AddForgetCommand(*runs, context);
}

}  // namespace quillcast::cli
