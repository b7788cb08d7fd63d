#include "cli/send_steps.h"

#include <fmt/format.h>

#include "platform/text.h"
#include "run/pre_flight.h"
#include "run/pre_send_checks.h"
#include "smtp/envelope_address.h"

namespace quillcast::cli {
Result<Mailing> PrepareMailing(Context& context, const DocumentOptions& options, const std::string& group) {
  auto folders = context.PreparedFolders();
  if (!folders) return folders.error();
  const profile::SettingsStore settings(folders->settings);
  auto account = account::AccountSettings::Load(settings);
  if (!account) return account.error();
  auto document = DocumentFrom(options, *folders, settings, context.prompts);
  if (!document) return document.error();
  const recipients::RecipientStore store(folders->Database(), {.cancel = &context.cancel});
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
  const auto filled_in = account::AccountIsFilledIn(profile::SettingsStore(mailing.folders.settings));
  if (!filled_in) return context.output.Fail(filled_in.error());
  auto groups = recipients::RecipientStore(mailing.folders.Database(), {.cancel = &context.cancel}).ListGroupNames();
  if (!groups) return context.output.Fail(groups.error());
  const run::MailingFacts facts{.account_filled_in = *filled_in,
                                .groups = std::move(*groups),
                                .group = mailing.group.name,
                                .recipients = mailing.recipients,
                                .subject = mailing.document.subject,
                                .body_text = mailing.document.PlainText()};
  if (*filled_in && !facts.groups.empty() && !facts.group.empty() && mailing.group.id == 0) {
    return context.output.Fail({Failure::kUsage, Say("There is no group {}.", platform::Printable(facts.group, 100)),
                                "quillcast group list shows the groups; quillcast group new makes one."});
  }
  const auto refused = run::CheckBeforeSending(facts, context.prompts);
  if (!refused) return 0;
  if (!*filled_in) {
    context.output.Note("Fill in the account with: quillcast account set --help");
    return ExitCode(Failure::kNotConfigured);
  }
  return ExitCode(*refused == "GroupButton" ? Failure::kUsage : Failure::kNotPermitted);
}

Result<void> SettlePictures(Context& context, const message::MessageOptions& options, ForeignPictures choice,
                            document::MessageDocument& document) {
  const auto pictures = message::LookForPictures(document, options, context.cancel);
  if (!pictures) return pictures.error();
  const auto files = message::PicturesToAskFor(pictures->foreign);
  if (files.empty()) return {};
  bool take = false;
  if (choice == ForeignPictures::kAskAbout) {
    if (!context.may_ask || context.assume_yes) {
      return Error{Failure::kNotPermitted, message::NameForeign(files),
                   "--pictures-from DIR takes those in that folder along, --leave-pictures-out sends without them."};
    }
    const auto answer = context.prompts.AskOrCancel(message::PictureQuestion(files));
    if (answer == platform::Answer::kCancel) return Error{Failure::kNotPermitted, "Nothing was sent.", ""};
    take = answer == platform::Answer::kYes;
  }
  document.picture_places.Answer(files, take);
  return {};
}

Result<std::vector<std::string>> TellFindings(Context& context, const Mailing& mailing,
                                              const message::MessageTemplate& message, bool asks_server) {
  auto rows = OpenRows(mailing);
  if (!rows) return rows.error();
  const auto found = run::LookOver(*rows, mailing.document, message, context.cancel);
  if (!found) return found.error();
  auto lines = message::ListPictures(message.pictures(), message.foreign_pictures());
  for (auto& line : run::Describe(*found)) lines.push_back(std::move(line));
  if (asks_server) {
    const auto told = run::AskAboutNotices(mailing.account, message, context.clock, context.cancel);
    if (told) lines.push_back(*told);
  }
  for (const auto& line : lines) context.output.Note("Note: " + line);
  if (found->largest_message > 0) {
    context.output.Note(fmt::format("A message is about {}.", platform::HumanSize(found->largest_message)));
  }
  return lines;
}

Result<recipients::RecipientCursor> OpenRows(const Mailing& mailing) {
  return recipients::RecipientStore(mailing.folders.Database())
      .ListRecipients(mailing.group.id, mailing.group.sort_sql);
}

Result<Composed> ComposeAll(recipients::RowSource& rows, const message::MessageTemplate& message,
                            const std::optional<run::PartialRange>& range, const platform::CancelToken& cancel) {
  Composed composed;
  message::RenderedMessage rendered;
  const auto compose = [&](const recipients::Recipient& row, std::int64_t position) -> Result<bool> {
    const auto address = smtp::EnvelopeAddress(row.email());
    if (!address) {
      ++composed.unaddressed;
      return true;
    }
    const auto made = message.Render(row, *address, position, rendered);
    if (!made) return Error{made.error().failure, Say("{} (#{})", made.error().what, position), made.error().remedy};
    for (auto bytes = rendered.Next(); !bytes || !bytes->empty(); bytes = rendered.Next()) {
      if (!bytes) return bytes.error();
      composed.octets += bytes->size();
    }
    ++composed.messages;
    return true;
  };
  const auto walked = Walk(rows, range, &cancel, compose);
  if (!walked) return walked.error();
  if (*walked == recipients::Walked::kCancelled) {
    return Error{Failure::kTryAgain, "The dry run was interrupted.", ""};
  }
  return composed;
}

}  // namespace quillcast::cli
