// quillcast runs export|report: what is taken out of a kept run.
#include <fmt/format.h>

#include "cli/chosen_ones.h"
#include "cli/runs.h"
#include "cli/send_steps.h"
#include "platform/file_attributes.h"
#include "platform/text.h"
#include "run/mailing_lists.h"
#include "run/mailing_page.h"

namespace quillcast::cli {
namespace {

struct TakeOutOptions {
  std::int64_t run = 0;
  ChosenOnes whom;
  std::string file;
  std::string group;
};

// Writes what `fill` gives into the file, which is asked about where it is locked.
Result<void> WriteFile(Context& context, const std::string& file,
                       const std::function<Result<void>(const std::function<Result<void>(std::string_view)>&)>& fill) {
  return platform::ReplaceChosenFile(file, context.Folders().OwnFiles(), [&](int fd) {
    return fill([&](std::string_view text) { return platform::WriteAll(fd, file, text); });
  });
}

Result<int> ExportToFile(Context& context, run::RunJournal& journal, const run::MailingEntry& mailing,
                         const run::RecipientChoice& choice, const std::string& file) {
  if (const int refused = AskToWrite(context, file)) return refused;
  std::int64_t rows = 0;
  const auto written = WriteFile(context, file, [&](const auto& write) -> Result<void> {
    const auto listed = run::WriteList(journal, mailing.id, choice, context.cancel, write);
    if (!listed) return listed.error();
    rows = *listed;
    return {};
  });
  if (!written) return written.error();
  context.output.Line(fmt::format("{} written to {}. quillcast import with --header --rfc4180 takes them back.",
                                  platform::Counted(rows, "recipient was", "recipients were"), file));
  context.output.Object({{"exported", rows}, {"file", file}});
  return 0;
}

Result<int> ExportToGroup(Context& context, const profile::Folders& folders, run::RunJournal& journal,
                          const run::MailingEntry& mailing, const run::RecipientChoice& choice,
                          const std::string& group) {
  recipients::RecipientStore store(folders.Database(), {.cancel = &context.cancel});
  const auto made = run::MakeGroup(journal, mailing, choice, group, store);
  if (!made) return made.error();
  context.output.Line(
      fmt::format("Group \"{}\" was made of {}.", group, platform::Counted(made->added, "recipient", "recipients")));
  if (made->twice > 0) {
    context.output.Note(fmt::format("{} left out, for their addresses stand in it already.",
                                    platform::Counted(made->twice, "recipient was", "recipients were")));
  }
  context.output.Object({{"group", group}, {"added", made->added}, {"twice", made->twice}});
  return 0;
}

int RunExport(Context& context, const TakeOutOptions& options) {
  if (options.file.empty() == options.group.empty()) {
    return context.output.Complain("Name one of --to FILE and --to-group NAME.");
  }
  const auto choice = ChoiceFrom(options.whom);
  if (!choice) return context.output.Fail(choice.error());
  if (choice->skipped) {
    return context.output.Fail(
        {Failure::kUsage, "The rows of those who were skipped are not kept with a run.",
         "quillcast runs show has their places; the group that the run was for has their rows."});
  }
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  return WithJournal(context, *folders, [&](run::RunJournal& journal) -> Result<int> {
    const auto mailing = MailingOf(journal, options.run);
    if (!mailing) return mailing.error();
    const auto count = run::CountChosen(journal, *mailing, choice->rows);
    if (!count) return count.error();
    if (*count == 0) return run::NobodyOf(choice->rows, *mailing);
    if (!options.file.empty()) return ExportToFile(context, journal, *mailing, choice->rows, options.file);
    return ExportToGroup(context, *folders, journal, *mailing, choice->rows, options.group);
  });
}

int RunReport(Context& context, const TakeOutOptions& options) {
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  return WithJournal(context, *folders, [&](run::RunJournal& journal) -> Result<int> {
    const auto mailing = MailingOf(journal, options.run);
    if (!mailing) return mailing.error();
    if (const int refused = AskToWrite(context, options.file)) return refused;
    const auto written = WriteFile(context, options.file, [&](const auto& write) {
      return run::WriteMailingPage(journal, *mailing, context.clock, context.cancel, write);
    });
    if (!written) return written.error();
    context.output.Line(fmt::format("The report of run #{} is in {}.", options.run, options.file));
    context.output.Object({{"run", options.run}, {"file", options.file}});
    return 0;
  });
}

}  // namespace

void AddTakeOutCommands(CLI::App& runs, Context& context) {
  auto* list = runs.add_subcommand("export", "Take the recipients of some states out, as a list or as a new group");
  auto options = std::make_shared<TakeOutOptions>();
  list->add_option("run", options->run, "The number that runs list shows")->required();
  list->add_option("--state", options->whom.states, "Whom, parted by commas: " + StateNames())
      ->type_name("STATES")
      ->required();
  AddReplyOption(*list, options->whom);
  list->add_option("--to", options->file, "Into this file, with every field, as a list that import takes back")
      ->type_name("FILE");
  list->add_option("--to-group", options->group, "Into a new group of this name")->type_name("NAME");
  list->footer(
      "The file has a line of headings and commas, and values in quotes where they need it (RFC 4180).\n"
      "Example:\n  quillcast runs export 12 --state \"refused,not tried\" --to left.csv\n  quillcast group new Left\n  "
      "quillcast import left.csv --group Left --header --rfc4180 --opt-in");
  OnRun(*list, context, [options](Context& c) { return RunExport(c, *options); });

  auto* report = runs.add_subcommand("report", "A page with charts, to hand to whoever ordered the mailing");
  auto page = std::make_shared<TakeOutOptions>();
  report->add_option("run", page->run, "The number that runs list shows")->required();
  report->add_option("--to", page->file, "The HTML file")->type_name("FILE")->required();
  report->footer(
      "The page needs nothing else, loads nothing and runs nothing.\n"
      "Example:\n  quillcast runs report 12 --to report.html");
  OnRun(*report, context, [page](Context& c) { return RunReport(c, *page); });
}

}  // namespace quillcast::cli
