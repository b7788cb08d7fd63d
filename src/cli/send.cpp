// quillcast send: a whole run, a dry run, one message into a file, or a proof to an address of one's own.
#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/document_options.h"
#include "cli/message_commands.h"
#include "cli/pace_options.h"
#include "cli/send_run.h"
#include "cli/send_steps.h"
#include "cli/sender_lookup.h"
#include "domain/name_look_ups.h"
#include "domain/sender/account_sender.h"
#include "platform/file_attributes.h"
#include "platform/text.h"
#include "run/partial_range.h"
#include "run/prepared_run.h"
#include "smtp/outcome_text.h"

namespace quillcast::cli {
namespace {

struct SendOptions {
  DocumentOptions document;
  std::string group;
  std::string range;
  bool dry_run = false;
  bool leave_pictures_out = false;
  std::string as;
  std::string to_file;
  std::string proof;
  bool check_domain = false;
  std::string dns;
  MailingOptions mailing;
  PaceOptions pace;
};

// Tells what is to be mended in the domain of the account's address, and goes on: receivers decide about that. False
// where nothing could be found out.
Result<bool> CheckDomain(Context& context, run::PreparedRun& prepared, const std::string& dns) {
  const auto servers = domain::ChosenDnsServers(dns);
  if (!servers) return servers.error();
  const auto account = prepared.Account();
  if (!account) return account.error();
  const auto question = domain::QuestionOf(**account);
  if (!question) return question.error();
  const auto report = CheckSenderNow(context, *question, *servers);
  if (!report) return report.error();
  for (const domain::Finding& finding : report->findings) {
    if (!domain::IsToMend(finding)) continue;
    context.output.Note(
        fmt::format("{}: {} {}", finding.topic(), finding.what.InEnglish(), finding.remedy.InEnglish()));
  }
  context.output.Note(report->Summary(question->domain).InEnglish());
  return !report->IsBlank();
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
  const auto other = document::CheckIsNoSource(options.to_file, prepared.document());
  if (!other) return context.output.Fail(other.error());
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

Result<void> CheckSendOptions(const SendOptions& options) {
  const auto wrong = [](const char* what) { return Error{Failure::kUsage, what, "See quillcast send --help."}; };
  if (!options.to_file.empty() && options.as.empty()) return wrong("--to-file needs --as ADDRESS.");
  if (!options.as.empty() && options.to_file.empty() && options.proof.empty()) {
    return wrong("--as goes with --to-file or --proof.");
  }
  const MailingOptions& mailing = options.mailing;
  if (options.dry_run + !options.to_file.empty() + !options.proof.empty() + !mailing.to_folder.empty() +
          !mailing.to_mbox.empty() >
      1) {
    return wrong("Only one of --dry-run, --to-file, --to-folder, --to-mbox and --proof can be done at a time.");
  }
  for (const std::string* file : {&options.to_file, &mailing.to_mbox}) {
    if (auto named = CheckNamesAFile(*file); !named) return named;
  }
  const bool is_run = !options.dry_run && options.to_file.empty() && options.proof.empty();
  if (options.pace.IsAsked() && !(is_run && mailing.delivery() == run::Delivery::kSent)) {
    return wrong(
        "A pace, --at, --per-connection, --connections, --retries, --slow-down and --network-wait go with sending to a "
        "group.");
  }
  if (!options.range.empty() && (!options.to_file.empty() || !options.proof.empty())) {
    return wrong("--range goes with a whole run, into files too, or --dry-run.");
  }
  return {};
}

int RunSend(Context& context, const SendOptions& options) {
  const auto usable = CheckSendOptions(options);
  if (!usable) return context.output.Fail(usable.error());
  const auto folders = context.PreparedFolders();
  if (!folders) return context.output.Fail(folders.error());
  auto prepared = PrepareRun(context, *folders, options.document, options.group);
  if (!prepared) return context.output.Fail(prepared.error());
  const auto pace = TakePace(context, options.pace, *prepared);
  if (!pace) return context.output.Fail(pace.error());
  const auto range = run::RangeFrom(options.range, prepared->group().recipients);
  if (!range) return context.output.Fail(range.error());
  if (const int refused = AskBeforeSending(context, *prepared, options.mailing.delivery())) return refused;

  // Where nothing is sent, they are only told of; but what goes into files for all is to be sent by other means.
  const bool sends = !options.dry_run && options.to_file.empty();
  if (sends || options.leave_pictures_out) {
    const auto choice = options.leave_pictures_out ? ForeignPictures::kLeaveOut : ForeignPictures::kAskAbout;
    const auto settled = SettlePictures(context, choice, *prepared);
    if (!settled) return context.output.Fail(settled.error());
  }
  bool is_domain_told = false;
  if (options.check_domain) {
    const auto checked = CheckDomain(context, *prepared, options.dns);
    if (!checked) return context.output.Fail(checked.error());
    is_domain_told = *checked;
  }
  // A run asks its server itself what it offers, where the rest does not speak to one.
  using Server = run::PreparedRun::Server;
  const auto told = TellFindings(context, *prepared, sends ? Server::kIsLeftAlone : Server::kIsAsked, is_domain_told);
  if (!told) return context.output.Fail(told.error());
  if (options.dry_run) return RunDry(context, *prepared, *range);
  if (!options.to_file.empty()) return RunToFile(context, options, *prepared);
  if (!options.proof.empty()) return RunProof(context, options, *prepared);
  return RunMailing(context, *folders, *prepared, *range, {*told, {}}, options.mailing);
}

}  // namespace

void AddSendCommand(CLI::App& app, Context& context) {
  auto* send = app.add_subcommand("send", "Send one personal message to each recipient of a group");
  auto options = std::make_shared<SendOptions>();
  send->add_option("--group", options->group, "The group")->required();
  AddDocumentOptions(*send, options->document);
  send->add_option("--range", options->range, "Only these places of the group's list, FIRST-LAST")->type_name("N-M");
  send->add_flag("--dry-run", options->dry_run, "Check and compose everything, hand over nothing");
  AddPaceOptions(*send, options->pace);
  send->add_flag("--keep-going", options->mailing.keep_going,
                 "Try every recipient, even where the server keeps refusing the sign-in or the sender");
  send->add_flag("--leave-pictures-out", options->leave_pictures_out,
                 "Send without the pictures that the body names in other folders, and do not ask");
  send->add_option("--as", options->as, "Whose data --to-file and --proof use")->type_name("ADDRESS");
  send->add_option("--to-file", options->to_file, "Write that recipient's message into this file")->type_name("FILE");
  send->add_option("--to-folder", options->mailing.to_folder,
                   "Send nothing: write each message into a file of its own in this folder")
      ->type_name("DIR");
  send->add_option("--to-mbox", options->mailing.to_mbox, "Send nothing: write all messages into this new mailbox file")
      ->type_name("FILE");
  send->add_option("--proof", options->proof, "Send one message to this address of your own")->type_name("ADDRESS");
  auto* check_domain = send->add_flag("--check-domain", options->check_domain,
                                      "Tell first whether mail in the name of the account's domain will be believed");
  send->add_option("--dns", options->dns, "Address of the name server that --check-domain asks")
      ->type_name("ADDR[:PORT]")
      ->needs(check_domain);
  send->footer(
      "Example:\n  quillcast send --group Customers --subject 'Hello $*MergeFirstName*$' --body letter.html --attach "
      "price.pdf\n\nExit codes: 0 all sent; 1 some failed; 75 interrupted, or given up because the sign-in was refused "
      "3 times, or the sender or the session 20 times in a row; others: why is told on standard error.");
  OnRun(*send, context, [options](Context& c) { return RunSend(c, *options); });
}

}  // namespace quillcast::cli
