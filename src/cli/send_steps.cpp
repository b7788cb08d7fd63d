#include "cli/send_steps.h"

#include <fmt/format.h>

#include "platform/text.h"
#include "recipients/envelope_address.h"
#include "recipients/text_order.h"
#include "sending/pre_flight.h"
#include "sending/pre_send_checks.h"
#include "sending/send_status.h"
#include "smtp/client.h"

namespace quillcast::cli {
namespace {

// The account as the checks before sending see it: the port counts as missing when it was never saved.
Result<bool> IsFilledIn(const app::SettingsStore& settings) {
  for (const char* key : {"Name", "Email", "Server", "Port"}) {
    const auto value = settings.Read(sending::kAccountSection, key, "");
    if (!value) return value.error();
    if (value->empty()) return false;
  }
  return true;
}

// Hands over one message and keeps what became of it.
class SingleMailing final : public smtp::Mailing {
 public:
  SingleMailing(sending::RenderedMessage& message, const Output& output) : output_(output) {
    job_.envelope = message.envelope;
    job_.message = &message;
  }
  smtp::Job* NextJob() override { return std::exchange(taken_, true) ? nullptr : &job_; }
  void Finished(smtp::Job&, const smtp::Outcome& outcome) override { outcome_ = outcome; }
  void LogLine(std::string_view line) override { output_.Note(line); }
  void Progress(std::uint64_t, std::uint64_t) override {}
  const smtp::Outcome& outcome() const { return outcome_; }

 private:
  const Output& output_;
  smtp::Job job_;
  bool taken_ = false;
  smtp::Outcome outcome_{
      .state = smtp::State::kFailed, .code = smtp::ResultCode::kCancelled, .reply = {}, .reason = {}};
};

Result<void> RenderRow(const recipients::Recipient& row, const std::string& to, std::int64_t number,
                       const sending::MessageTemplate& message, sending::RenderedMessage& out) {
  std::array<std::string, compose::kMergeFields.size()> changed;
  return message.Render(compose::ValuesForMerge(row, changed), to, static_cast<std::uint64_t>(number), out);
}

Result<recipients::Recipient> FindRow(const std::string& address, const Mailing& mailing) {
  auto rows = OpenRows(mailing);
  if (!rows) return rows.error();
  recipients::Recipient row;
  for (;;) {
    const auto more = rows->Next(row);
    if (!more) return more.error();
    if (!*more) break;
    const auto envelope = recipients::EnvelopeAddress(row.email());
    const bool found = address.empty() || recipients::CompareText(row.email(), address) == 0 ||
                       (envelope && recipients::CompareText(*envelope, address) == 0);
    if (found) return row;
  }
  return Error{Failure::kUsage,
               fmt::format("{} is not in the group {}.", platform::Printable(address, 100), mailing.group.name),
               fmt::format("quillcast recipient list --group '{}' shows who is.", mailing.group.name)};
}

}  // namespace

Result<Mailing> PrepareMailing(Context& context, const DocumentOptions& options, const std::string& group) {
  auto folders = context.PreparedFolders();
  if (!folders) return folders.error();
  const app::SettingsStore settings(folders->settings);
  auto account = sending::AccountSettings::Load(settings);
  if (!account) return account.error();
  auto document = DocumentFrom(options, settings, context.prompts);
  if (!document) return document.error();
  const recipients::RecipientStore store(folders->Database());
  auto found = store.FindGroup(group);
  if (!found) return found.error();
  Mailing mailing{*folders, std::move(*account), std::move(*document), {}, 0};
  mailing.group.name = group;
  if (*found) {
    mailing.group = **found;
    const auto count = store.CountRecipients(group);
    if (!count) return count.error();
    mailing.recipients = *count;
  }
  return mailing;
}

int AskBeforeSending(Context& context, const Mailing& mailing) {
  const auto filled_in = IsFilledIn(app::SettingsStore(mailing.folders.settings));
  if (!filled_in) return context.output.Fail(filled_in.error());
  auto groups = recipients::RecipientStore(mailing.folders.Database()).ListGroupNames();
  if (!groups) return context.output.Fail(groups.error());
  const sending::MailingFacts facts{.account_filled_in = *filled_in,
                                    .groups = std::move(*groups),
                                    .group = mailing.group.name,
                                    .recipients = mailing.recipients,
                                    .subject = mailing.document.subject,
                                    .body_text = mailing.document.PlainText()};
  if (*filled_in && !facts.groups.empty() && !facts.group.empty() && mailing.group.id == 0) {
    return context.output.Fail({Failure::kUsage,
                                fmt::format("There is no group {}.", platform::Printable(facts.group, 100)),
                                "quillcast group list shows the groups; quillcast group new makes one."});
  }
  const auto refused = sending::CheckBeforeSending(facts, context.prompts);
  if (!refused) return 0;
  if (!*filled_in) {
    context.output.Note("Fill in the account with: quillcast account set --help");
    return ExitCode(Failure::kNotConfigured);
  }
  return ExitCode(*refused == "GroupButton" ? Failure::kUsage : Failure::kNotPermitted);
}

Result<void> TellFindings(Context& context, const Mailing& mailing, const sending::MessageTemplate& message) {
  auto rows = OpenRows(mailing);
  if (!rows) return rows.error();
  const auto found = sending::LookOver(std::move(*rows), mailing.document, message, context.cancel);
  if (!found) return found.error();
  for (const auto& line : sending::Describe(*found)) context.output.Note("Note: " + line);
  if (found->largest_message > 0) {
    context.output.Note(fmt::format("A message is about {}.", platform::HumanSize(found->largest_message)));
  }
  return {};
}

Result<recipients::RecipientCursor> OpenRows(const Mailing& mailing) {
  return recipients::RecipientStore(mailing.folders.Database())
      .ListRecipients(mailing.group.id, mailing.group.sort_sql);
}

Result<Composed> ComposeAll(recipients::RecipientCursor rows, const sending::MessageTemplate& message,
                            const std::optional<sending::PartialRange>& range, const platform::CancelToken& cancel) {
  Composed composed;
  recipients::Recipient row;
  sending::RenderedMessage rendered;
  for (std::int64_t position = 1; cancel.Requested() == platform::Stop::kNone; ++position) {
    const auto more = rows.Next(row);
    if (!more) return more.error();
    if (!*more || (range && position > range->last)) return composed;
    if (range && position < range->first) continue;
    const auto address = recipients::EnvelopeAddress(row.email());
    if (!address) {
      ++composed.unaddressed;
      continue;
    }
    const auto made = RenderRow(row, *address, position, message, rendered);
    if (!made)
      return Error{made.error().failure, fmt::format("{} (#{})", made.error().what, position), made.error().remedy};
    for (auto bytes = rendered.Next(); !bytes || !bytes->empty(); bytes = rendered.Next()) {
      if (!bytes) return bytes.error();
      composed.octets += bytes->size();
    }
    ++composed.messages;
  }
  return Error{Failure::kTryAgain, "The dry run was interrupted.", ""};
}

Result<RenderedRow> RenderFor(const std::string& address, const std::string& send_to, const Mailing& mailing,
                              const sending::MessageTemplate& message, sending::RenderedMessage& out) {
  if (const auto& trouble = message.trouble()) return trouble->error;
  const auto row = FindRow(address, mailing);
  if (!row) return row.error();
  const auto to = recipients::EnvelopeAddress(send_to.empty() ? row->email() : send_to);
  if (!to) return to.error();
  const auto made = RenderRow(*row, *to, 1, message, out);
  if (!made) return made.error();
  return RenderedRow{row->email()};
}

Result<smtp::Outcome> SendOne(const sending::AccountSettings& account, sending::RenderedMessage& message,
                              Context& context) {
  const auto options = sending::ClientOptionsOf(account);
  if (!options) return options.error();
  SingleMailing mailing(message, context.output);
  smtp::Client(*options, context.clock, context.cancel).Run(mailing);
  return mailing.outcome();
}

std::string ReplyText(const smtp::ServerReply& reply) {
  if (reply.code == 0) return {};
  const std::string enhanced = reply.enhanced.empty() ? "" : reply.enhanced + " ";
  return fmt::format("{} {}{}", reply.code, enhanced,
                     platform::Printable(platform::ReplaceAll(reply.text, "\n", " / ")));
}

std::string OutcomeText(const smtp::Outcome& outcome) {
  std::string text =
      fmt::format("{} ({})", smtp::Name(outcome.state), sending::ResultText(static_cast<std::int32_t>(outcome.code)));
  if (outcome.reply.code != 0) text += fmt::format(" The server said: {}", ReplyText(outcome.reply));
  if (!outcome.reason.empty()) text += " " + outcome.reason;
  return text;
}

}  // namespace quillcast::cli
