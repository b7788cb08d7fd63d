// quillcast history list|open|clear
#include "run/history.h"

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/runs.h"
#include "platform/text.h"
#include "run/run_words.h"

namespace quillcast::cli {
namespace {

struct OpenOptions {
  std::size_t number = 0;
  bool message = false;
};

int RunHistoryList(Context& context) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  const auto rows = run::ListHistory(folders->History());
  if (!rows) return context.output.Fail(rows.error());
  std::size_t number = 0;
  for (const auto& row : *rows) {
    ++number;
    context.output.Line(fmt::format("{:>3}  {}", number, platform::Printable(row.text)));
    context.output.Object({{"number", number},
                           {"text", row.text},
                           {"state", run::Name(row.delivery)},
                           {"report", (folders->History() / row.file).string()}});
  }
  if (rows->empty()) context.output.Note("There is no run in the history yet.");
  return 0;
}

int RunOpen(Context& context, const OpenOptions& options) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  const auto rows = run::ListHistory(folders->History());
  if (!rows) return context.output.Fail(rows.error());
  if (options.number == 0 || options.number > rows->size()) {
    return context.output.Complain(
        fmt::format("There is no run number {}; quillcast history list shows them.", options.number));
  }
  platform::XdgDesktop desktop(context.environment.Get("DISPLAY") || context.environment.Get("WAYLAND_DISPLAY"));
  const auto& row = (*rows)[options.number - 1];
  const auto opened = options.message ? run::OpenMessage(folders->History(), row, desktop, context.prompts)
                                      : run::OpenLog(folders->History(), row, desktop, context.prompts);
  return opened ? 0 : context.output.Fail(opened.error());
}

// With the reports goes what the journal keeps of those runs.
Result<run::Forgotten> ForgetFinished(Context& context, const profile::Folders& folders) {
  if (!std::filesystem::exists(folders.RunJournal(), IgnoreErrors())) return run::Forgotten();
  const auto journal = run::OpenJournal(folders, context.clock, context.cancel);
  return journal ? run::ForgetFinished(**journal) : Result<run::Forgotten>(journal.error());
}

// What went, and what stays and why.
nlohmann::ordered_json AsObject(const run::ClearedHistory& cleared, const Result<run::Forgotten>& forgotten) {
  nlohmann::ordered_json object = {{"deleted", cleared.deleted},
                                   {"left", cleared.left},
                                   {"going_on", cleared.going_on},
                                   {"folders", cleared.folders},
                                   {"is_link", cleared.is_link}};
  if (!forgotten) return object;
  object["forgotten"] = forgotten->mailings;
  object["forgotten_unknown"] = forgotten->unknown;
  object["kept_runs"] = nlohmann::ordered_json::array();
  for (const run::MailingEntry& mailing : forgotten->kept) {
    object["kept_runs"].push_back({{"run", mailing.runs.front().id},
                                   {"subject", mailing.subject},
                                   {"group", mailing.group},
                                   {"why", run::Name(run::StandingOf(mailing))}});
  }
  object["damaged_runs"] = forgotten->damaged.size();
  return object;
}

int RunClear(Context& context) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  const auto cleared = run::ClearHistory(folders->History(), context.prompts);
  if (cleared.clearing == run::Clearing::kKept) return ExitCode(Failure::kNotPermitted);
  const auto done = run::WhatFailed(cleared, folders->History());
  const auto forgotten = done ? ForgetFinished(context, *folders) : Result<run::Forgotten>(done.error());
  context.output.Line(
      fmt::format("{} deleted.", platform::Counted(static_cast<std::int64_t>(cleared.deleted), "file", "files")));
  context.output.Object(AsObject(cleared, forgotten));
  for (const auto& sentence : run::WhatStayed(cleared)) context.output.Note(sentence.InEnglish());
  if (!forgotten) return context.output.Fail(forgotten.error());
  if (const auto went = run::WhatWentOf(*forgotten)) context.output.Note(went->InEnglish());
  for (const auto& sentence : run::WhatStayed(*forgotten)) context.output.Note(sentence.InEnglish());
  return 0;
}

}  // namespace

void AddHistoryCommand(CLI::App& app, Context& context) {
  auto* history = app.add_subcommand("history", "What earlier runs left behind: their reports and first messages");
  history->require_subcommand(1);

  auto* list = history->add_subcommand("list", "The runs, in the order in which the folder holds them");
  list->footer("Example:\n  quillcast history list");
  OnRun(*list, context, RunHistoryList);

  auto* open = history->add_subcommand("open", "Open a run's report with the desktop's program for it");
  auto options = std::make_shared<OpenOptions>();
  open->add_option("number", options->number, "The number that history list shows")->required();
  open->add_flag("--message", options->message, "Open the run's first message instead");
  open->footer("Example:\n  quillcast history open 1 --message");
  OnRun(*open, context, [options](Context& c) { return RunOpen(c, *options); });

  auto* clear =
      history->add_subcommand("clear", "Delete every file of the history folder, and what is kept of finished runs");
  clear->footer("Example:\n  quillcast history clear --yes");
  OnRun(*clear, context, RunClear);
}

}  // namespace quillcast::cli
