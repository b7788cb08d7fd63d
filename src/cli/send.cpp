// quillcast send: a whole run, a dry run, one message into a file, or a proof to an address of one's own.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>

#include "cli/commands.h"
#include "cli/document_options.h"
#include "cli/send_steps.h"
#include "platform/file_attributes.h"
#include "platform/text.h"
#include "run/partial_range.h"
#include "run/prepared_run.h"
#include "run/run_words.h"
#include "smtp/outcome_text.h"

namespace quillcast::cli {
namespace {

constexpr std::int64_t kMostNotTried = 20;  // who are named to people

struct SendOptions {
  DocumentOptions document;
  std::string group;
  std::string range;
  bool dry_run = false;
  bool keep_going = false;
  bool leave_pictures_out = false;
  std::string as;
  std::string to_file;
  std::string proof;
};

// Tells the person at the terminal, or the program behind it, how a run goes.
class SendListener final : public run::RunListener {
 public:
  // `told`: what the person was told before the run, and is not told again.
  SendListener(Output& output, const std::vector<Sentence>& told, bool keep_going)
      : output_(output), told_(told), keep_going_(keep_going) {}

  void ReportLine(std::string_view) override {}  // the report is in the history
  void Note(const Sentence& sentence) override {
    if (std::find(told_.begin(), told_.end(), sentence) == told_.end()) output_.Note(sentence.InEnglish());
  }

  void Finished(const run::RecipientResult& result) override {
    const auto& outcome = result.outcome;
    if (output_.json) {
      output_.Object({{"position", result.position},
                      {"address", result.address},
                      {"state", smtp::Name(outcome.state)},
                      {"code", static_cast<int>(outcome.code)},
                      {"reply", smtp::ReplyText(outcome.reply)},
                      {"reason", outcome.reason}});
    }
    if (outcome.state == smtp::State::kSent) return;
    output_.EndProgress();
    output_.Note(fmt::format("#{} {}: {}", result.position, platform::Printable(result.address, 100),
                             smtp::OutcomeText(outcome)));
  }

  bool GoOn(const smtp::Outcome& refusal, int times) override {
    if (keep_going_) return true;
    output_.EndProgress();
    output_.Note(run::RefusedTheSame(refusal, times, run::Then::kStops).InEnglish());
    output_.Note("--keep-going tries every recipient all the same.");
    return false;
  }
  void NotTried(std::int64_t position, const std::string& address) override {
    output_.Object({{"position", position}, {"address", address}, {"state", "not tried"}});
    if (++not_tried_ > kMostNotTried) {
      last_not_tried_ = position;
      return;
    }
    output_.EndProgress();
    output_.Note(fmt::format("#{} {}: not tried", position, platform::Printable(address, 100)));
  }
  // Those beyond the first few, who would push what failed out of sight; --json and the history name each.
  void CountNotTried() {
    if (not_tried_ <= kMostNotTried) return;
    const std::int64_t more = not_tried_ - kMostNotTried;
    output_.Note(fmt::format("and {} more: not tried (from #{} to #{})", platform::WithThousands(more),
                             last_not_tried_ - more + 1, last_not_tried_));
  }

  void Progress(std::int64_t done, std::int64_t total, std::uint64_t, std::uint64_t) override {
    output_.Progress(fmt::format("{} of {} messages", platform::WithThousands(done), platform::WithThousands(total)));
  }

 private:
  Output& output_;
  const std::vector<Sentence>& told_;
  bool keep_going_;
  std::int64_t not_tried_ = 0;
  std::int64_t last_not_tried_ = 0;
};

int TellSummary(Context& context, const profile::Folders& folders, const run::RunSummary& summary) {
  context.output.Object({{"sent", summary.sent},
                         {"failed", summary.failed},
                         {"not_tried", summary.not_tried},
                         {"history", summary.history}});
  context.output.Line(run::CountsOf(summary).InEnglish());
  context.output.Line(fmt::format("Report: {}", run::ReportIn(folders.History(), summary.history).string()));
  if (const auto left = run::NotTriedIn(summary)) context.output.Note(left->InEnglish());
  if (summary.stopped) return context.output.Fail(*summary.stopped);
  if (!summary.reached_its_end()) return ExitCode(Failure::kTryAgain);
  return summary.everybody_got_it() ? 0 : 1;
}

int RunMailing(Context& context, const profile::Folders& folders, run::PreparedRun& prepared,
               const std::optional<run::PartialRange>& range, const std::vector<Sentence>& told, bool keep_going) {
  const auto message = prepared.Message();
  if (!message) return context.output.Fail(message.error());
  if (const auto& trouble = (*message)->trouble()) {
    context.output.Note("Note: No message can be made. " + InOneLine(trouble->error));
  }
  SendListener listener(context.output, told, keep_going);
  const auto summary = prepared.Run(range, listener);
  context.output.EndProgress();
  if (!summary) return context.output.Fail(summary.error());
  listener.CountNotTried();
  return TellSummary(context, folders, *summary);
}

// Composes every message and hands over nothing.
int RunDry(Context& context, run::PreparedRun& prepared, const std::optional<run::PartialRange>& range) {
  const auto composed = prepared.Compose(range);
  if (!composed) return context.output.Fail(composed.error());
  context.output.Line(fmt::format("{} composed, {} octets in all; nothing was sent.",
                                  platform::Counted(composed->messages, "message", "messages"),
                                  platform::WithThousands(static_cast<std::int64_t>(composed->octets))));
  context.output.Object(
      {{"composed", composed->messages}, {"octets", composed->octets}, {"unaddressed", composed->unaddressed}});
  return composed->unaddressed > 0 ? 1 : 0;
}

// The message that --to-file or --proof asks for.
Result<recipients::Recipient> RenderRequested(const SendOptions& options, run::PreparedRun& prepared,
                                              message::RenderedMessage& rendered) {
  auto row = prepared.RecipientWith(options.as);
  if (!row) {
    return Error{row.error().failure, row.error().what,
                 Say("quillcast recipient list --group '{}' shows who is in it.", prepared.group().group.name)};
  }
  const auto made = prepared.Render(*row, options.proof, rendered);
  if (!made) return made.error();
  return row;
}

int RunToFile(Context& context, const SendOptions& options, run::PreparedRun& prepared) {
  message::RenderedMessage rendered;
  const auto row = RenderRequested(options, prepared, rendered);
  if (!row) return context.output.Fail(row.error());
  if (const int refused = AskToWrite(context, options.to_file)) return refused;
  const auto written = platform::ReplaceChosenFile(options.to_file, context.Folders().OwnFiles(), [&](int fd) {
    return message::WriteMessage(rendered, fd, options.to_file);
  });
  if (!written) return context.output.Fail(written.error());
  context.output.Line(
      fmt::format("The message for {} is in {}.", platform::Printable(options.as, 100), options.to_file));
  context.output.Object({{"file", options.to_file}, {"octets", rendered.size()}});
  return 0;
}

int RunProof(Context& context, const SendOptions& options, run::PreparedRun& prepared) {
  message::RenderedMessage rendered;
  const auto row = RenderRequested(options, prepared, rendered);
  if (!row) return context.output.Fail(row.error());
  const auto outcome = prepared.Send(rendered, [&](std::string_view line) { context.output.Note(line); });
  if (!outcome) return context.output.Fail(outcome.error());
  const bool sent = outcome->state == smtp::State::kSent;
  context.output.Object({{"address", options.proof},
                         {"state", smtp::Name(outcome->state)},
                         {"code", static_cast<int>(outcome->code)},
                         {"reply", smtp::ReplyText(outcome->reply)}});
  if (sent) {
    context.output.Line(fmt::format("The proof for {} is on its way to {}.", row->email(), options.proof));
    return 0;
  }
  context.output.Note(fmt::format("{}: {}", platform::Printable(options.proof, 100), smtp::OutcomeText(*outcome)));
  return outcome->code == smtp::ResultCode::kCancelled ? ExitCode(Failure::kTryAgain) : 1;
}

Result<void> CheckOptions(const SendOptions& options) {
  const auto wrong = [](const char* what) { return Error{Failure::kUsage, what, "See quillcast send --help."}; };
  if (!options.to_file.empty() && options.as.empty()) return wrong("--to-file needs --as ADDRESS.");
  if (!options.as.empty() && options.to_file.empty() && options.proof.empty()) {
    return wrong("--as goes with --to-file or --proof.");
  }
  if (options.dry_run + !options.to_file.empty() + !options.proof.empty() > 1) {
    return wrong("Only one of --dry-run, --to-file and --proof can be done at a time.");
  }
  if (!options.range.empty() && (!options.to_file.empty() || !options.proof.empty())) {
    return wrong("--range goes with a whole run or --dry-run.");
  }
  return {};
}

int RunSend(Context& context, const SendOptions& options) {
  const auto usable = CheckOptions(options);
  if (!usable) return context.output.Fail(usable.error());
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  auto prepared = PrepareRun(context, *folders, options.document, options.group);
  if (!prepared) return context.output.Fail(prepared.error());
  const auto range = run::RangeFrom(options.range, prepared->group().recipients);
  if (!range) return context.output.Fail(range.error());
  if (const int refused = AskBeforeSending(context, *prepared)) return refused;

  // Where nothing is sent, they are only told of.
  const bool sends = !options.dry_run && options.to_file.empty();
  if (sends || options.leave_pictures_out) {
    const auto choice = options.leave_pictures_out ? ForeignPictures::kLeaveOut : ForeignPictures::kAskAbout;
    const auto settled = SettlePictures(context, choice, *prepared);
    if (!settled) return context.output.Fail(settled.error());
  }
  // A run asks its server itself what it offers, where the rest does not speak to one.
  using Server = run::PreparedRun::Server;
  const auto told = TellFindings(context, *prepared, sends ? Server::kIsLeftAlone : Server::kIsAsked);
  if (!told) return context.output.Fail(told.error());
  if (options.dry_run) return RunDry(context, *prepared, *range);
  if (!options.to_file.empty()) return RunToFile(context, options, *prepared);
  if (!options.proof.empty()) return RunProof(context, options, *prepared);
  return RunMailing(context, *folders, *prepared, *range, *told, options.keep_going);
}

}  // namespace

void AddSendCommand(CLI::App& app, Context& context) {
  auto* send = app.add_subcommand("send", "Send one personal message to each recipient of a group");
  auto options = std::make_shared<SendOptions>();
  send->add_option("--group", options->group, "The group")->required();
  AddDocumentOptions(*send, options->document);
  send->add_option("--range", options->range, "Only these places of the group's list, FIRST-LAST")->type_name("N-M");
  send->add_flag("--dry-run", options->dry_run, "Check and compose everything, hand over nothing");
  send->add_flag("--keep-going", options->keep_going,
                 "Try every recipient, even where the server keeps refusing the sign-in or the sender");
  send->add_flag("--leave-pictures-out", options->leave_pictures_out,
                 "Send without the pictures that the body names in other folders, and do not ask");
  send->add_option("--as", options->as, "Whose data --to-file and --proof use")->type_name("ADDRESS");
  send->add_option("--to-file", options->to_file, "Write that recipient's message into this file")->type_name("FILE");
  send->add_option("--proof", options->proof, "Send one message to this address of your own")->type_name("ADDRESS");
  send->footer(
      "Example:\n  quillcast send --group Customers --subject 'Hello $*MergeFirstName*$' --body letter.html --attach "
      "price.pdf\n\nExit codes: 0 all sent; 1 some failed; 75 interrupted, or given up because the sign-in was refused "
      "3 times or the sender 20 times in a row; others: why is told on standard error.");
  OnRun(*send, context, [options](Context& c) { return RunSend(c, *options); });
}

}  // namespace quillcast::cli
