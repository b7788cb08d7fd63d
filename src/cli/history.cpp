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

int RunList(Context& context) {
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

int RunClear(Context& context) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  const auto cleared = run::ClearHistory(folders->History(), context.prompts);
  if (cleared.clearing == run::Clearing::kKept) return ExitCode(Failure::kNotPermitted);
  context.output.Line(
      fmt::format("{} deleted.", platform::Counted(static_cast<std::int64_t>(cleared.deleted), "file", "files")));
  context.output.Object({{"deleted", cleared.deleted},
                         {"left", cleared.left},
                         {"going_on", cleared.going_on},
                         {"folders", cleared.folders}});
  for (const auto& sentence : run::WhatStayed(cleared)) context.output.Note(sentence.InEnglish());
  const auto done = run::WhatFailed(cleared, folders->History());
  if (!done) return context.output.Fail(done.error());
  // With the reports goes what the journal keeps of those runs.
  if (!std::filesystem::exists(folders->RunJournal(), IgnoreErrors())) return 0;
  return WithJournal(context, *folders, [&](run::RunJournal& journal) -> Result<int> {
    const auto forgotten = run::ForgetFinished(journal);
    if (!forgotten) return forgotten.error();
    if (const auto went = run::WhatWentOf(*forgotten)) context.output.Note(went->InEnglish());
    for (const auto& sentence : run::WhatStayed(*forgotten)) context.output.Note(sentence.InEnglish());
    return 0;
  });
}

}  // namespace

void AddHistoryCommand(CLI::App& app, Context& context) {
  auto* history = app.add_subcommand("history", "What earlier runs left behind: their reports and first messages");
  history->require_subcommand(1);

  auto* list = history->add_subcommand("list", "The runs, in the order in which the folder holds them");
  list->footer("Example:\n  quillcast history list");
  OnRun(*list, context, RunList);

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
