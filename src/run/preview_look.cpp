#include "run/preview_look.h"

#include <fmt/format.h>

#include "account/account_message.h"
#include "account/account_settings.h"
#include "document/merge_fields.h"
#include "message/message_template.h"
#include "platform/text.h"
#include "run/pre_flight.h"
#include "run/single_message.h"
#include "smtp/outcome_text.h"

namespace quillcast::run {
namespace {

Result<recipients::Recipient> RowAt(const recipients::RecipientStore& store, const recipients::RecipientGroup& group,
                                    std::int64_t position, const platform::CancelToken& cancel) {
  auto rows = store.ListRecipients(group.id, group.sort_sql);
  if (!rows) return rows.error();
  std::optional<recipients::Recipient> found;
  const auto walked = Walk(*rows, recipients::PartialRange{position, position}, &cancel,
                           [&found](const recipients::Recipient& row, std::int64_t) {
                             found = row;
                             return false;
                           });
  if (!walked) return walked.error();
  if (found) return *found;
  if (*walked == recipients::Walked::kCancelled) return Error{Failure::kTryAgain, "Stopped.", ""};
  return Error{Failure::kUsage, Say("The group has no recipient #{}.", position), ""};
}

// The message with the account as it is stored. The account must outlive nothing: what the message needs is copied.
Result<std::unique_ptr<message::MessageTemplate>> Compile(const document::MessageDocument& document,
                                                          const profile::Program& program,
                                                          const profile::SettingsStore& settings,
                                                          const account::AccountSettings& account) {
  auto options = account::LoadMessageOptions(settings, account);
  if (!options) return options.error();
  return std::make_unique<message::MessageTemplate>(document, std::move(*options), program.folders.temporary,
                                                    program.clock, program.entropy);
}

}  // namespace

Result<RecipientView> ViewFor(const document::MessageDocument& document, const recipients::RecipientStore& store,
                              const recipients::RecipientGroup& group, std::int64_t position,
                              const platform::CancelToken& cancel) {
  const auto row = RowAt(store, group, position, cancel);
  if (!row) return row.error();
  std::array<std::string, document::kMergeFields.size()> changed;
  const auto values = document::ValuesForMerge(*row, changed);
  auto subject = document::ReplaceMergeFields(document.subject, values);
  auto html = document::ReplaceMergeFields(document.html, values);
  auto text = document::ReplaceMergeFields(document.PlainText(), values);
  if (!subject || !html || !text) {
    return Error{Failure::kBadData, "The values of this recipient make the message too long.",
                 "Look at the values that hold merge tags themselves."};
  }
  return RecipientView{row->email(), std::move(*subject), std::move(*html), std::move(*text)};
}

Result<MessageLook> FindTrouble(const document::MessageDocument& document, const profile::Program& program,
                                const recipients::RecipientGroup& group, const platform::CancelToken& cancel) {
  const profile::SettingsStore settings(program.settings.file(), {.cancel = &cancel});
  const auto account = account::AccountSettings::Load(settings);
  if (!account) return account.error();
  const auto message = Compile(document, program, settings, *account);
  if (!message) return message.error();
  MessageLook look;
  auto& lines = look.troubles;
  if (const auto& trouble = (*message)->trouble()) lines.push_back(InOneLine(trouble->error));
  for (auto& line : message::ListPictures({}, (*message)->foreign_pictures())) lines.push_back(std::move(line));
  look.pictures = message::ListPictures((*message)->pictures(), {});
  auto rows = recipients::RecipientStore(program.folders.Database(), {.cancel = &cancel})
                  .ListRecipients(group.id, group.sort_sql);
  if (!rows) return rows.error();
  const auto found = LookOver(*rows, document, **message, cancel);
  if (!found) return found.error();
  for (auto& line : Describe(*found)) lines.push_back(std::move(line));
  if (auto told = AskAboutNotices(*account, **message, program.clock, cancel)) lines.push_back(std::move(*told));
  if (found->largest_message > 0) {
    look.size = fmt::format("A message is about {}.", platform::HumanSize(found->largest_message));
  }
  return look;
}

Result<message::RelatedPictures> LookForPictures(const document::MessageDocument& document,
                                                 const std::filesystem::path& settings_file,
                                                 const platform::CancelToken& cancel) {
  const profile::SettingsStore settings(settings_file, {.cancel = &cancel});
  const auto account = account::AccountSettings::Load(settings);
  if (!account) return account.error();
  const auto options = account::LoadMessageOptions(settings, *account);
  // With such an account no message goes out, which whoever sends is told.
  if (!options && options.error().failure == Failure::kNotConfigured) return message::RelatedPictures();
  if (!options) return options.error();
  return LookForPictures(document, *options, cancel);
}

Result<std::string> SendToMyself(const document::MessageDocument& document, const profile::Program& program,
                                 const recipients::RecipientGroup& group, std::int64_t position,
                                 const platform::CancelToken& cancel) {
  const profile::SettingsStore settings(program.settings.file(), {.cancel = &cancel});
  const auto account = account::AccountSettings::Load(settings);
  if (!account) return account.error();
  const auto row =
      RowAt(recipients::RecipientStore(program.folders.Database(), {.cancel = &cancel}), group, position, cancel);
  if (!row) return row.error();
  const auto message = Compile(document, program, settings, *account);
  if (!message) return message.error();
  const std::string& own = (*account)[account::AccountKey::kEmail];
  message::RenderedMessage rendered;
  const auto made = RenderFor(*row, own, **message, rendered);
  if (!made) return made.error();
  const auto outcome = SendAlone(*account, rendered, program.clock, cancel, [](std::string_view) {});
  if (!outcome) return outcome.error();
  if (outcome->state == smtp::State::kSent) {
    return fmt::format("The message for {} is on its way to {}.", platform::Printable(row->email(), 80), own);
  }
  return smtp::OutcomeText(*outcome);
}

}  // namespace quillcast::run
