#include "sending/preview_look.h"

#include <fmt/format.h>

#include "compose/merge_fields.h"
#include "platform/text.h"
#include "sending/account_settings.h"
#include "sending/message_template.h"
#include "sending/pre_flight.h"
#include "sending/single_message.h"

namespace quillcast::sending {
namespace {

Result<recipients::Recipient> RowAt(const recipients::RecipientStore& store, const recipients::RecipientGroup& group,
                                    std::int64_t position, const platform::CancelToken& cancel) {
  auto rows = store.ListRecipients(group.id, group.sort_sql);
  if (!rows) return rows.error();
  recipients::Recipient row;
  for (std::int64_t at = 1; cancel.Requested() == platform::Stop::kNone; ++at) {
    const auto more = rows->Next(row);
    if (!more) return more.error();
    if (!*more) return Error{Failure::kUsage, fmt::format("The group has no recipient #{}.", position), ""};
    if (at == position) return row;
  }
  return Error{Failure::kTryAgain, "Stopped.", ""};
}

// The message with the account as it is stored. The account must outlive nothing: what the message needs is copied.
Result<std::unique_ptr<MessageTemplate>> Compile(const compose::MessageDocument& document, const app::Program& program,
                                                 const app::SettingsStore& settings, const AccountSettings& account) {
  auto options = LoadMessageOptions(settings, account);
  if (!options) return options.error();
  return std::make_unique<MessageTemplate>(document, std::move(*options), program.folders.temporary, program.clock,
                                           program.entropy);
}

}  // namespace

Result<RecipientView> ViewFor(const compose::MessageDocument& document, const recipients::RecipientStore& store,
                              const recipients::RecipientGroup& group, std::int64_t position,
                              const platform::CancelToken& cancel) {
  const auto row = RowAt(store, group, position, cancel);
  if (!row) return row.error();
  std::array<std::string, compose::kMergeFields.size()> changed;
  const auto values = compose::ValuesForMerge(*row, changed);
  auto subject = compose::ReplaceMergeFields(document.subject, values);
  auto html = compose::ReplaceMergeFields(document.html, values);
  auto text = compose::ReplaceMergeFields(document.PlainText(), values);
  if (!subject || !html || !text) {
    return Error{Failure::kBadData, "The values of this recipient make the message too long.",
                 "Look at the values that hold merge tags themselves."};
  }
  return RecipientView{row->email(), std::move(*subject), std::move(*html), std::move(*text)};
}

Result<MessageLook> FindTrouble(const compose::MessageDocument& document, const app::Program& program,
                                const recipients::RecipientGroup& group, const platform::CancelToken& cancel) {
  const app::SettingsStore settings(program.settings.file(), {.cancel = &cancel});
  const auto account = AccountSettings::Load(settings);
  if (!account) return account.error();
  const auto message = Compile(document, program, settings, *account);
  if (!message) return message.error();
  MessageLook look;
  auto& lines = look.troubles;
  if (const auto& trouble = (*message)->trouble()) lines.push_back(InOneLine(trouble->error));
  for (auto& line : ListPictures({}, (*message)->foreign_pictures())) lines.push_back(std::move(line));
  look.pictures = ListPictures((*message)->pictures(), {});
  auto rows = recipients::RecipientStore(program.folders.Database(), {.cancel = &cancel})
                  .ListRecipients(group.id, group.sort_sql);
  if (!rows) return rows.error();
  const auto found = LookOver(std::move(*rows), document, **message, cancel);
  if (!found) return found.error();
  for (auto& line : Describe(*found)) lines.push_back(std::move(line));
  if (auto told = AskAboutNotices(*account, **message, program.clock, cancel)) lines.push_back(std::move(*told));
  if (found->largest_message > 0) {
    look.size = fmt::format("A message is about {}.", platform::HumanSize(found->largest_message));
  }
  return look;
}

Result<RelatedPictures> LookForPictures(const compose::MessageDocument& document,
                                        const std::filesystem::path& settings_file,
                                        const platform::CancelToken& cancel) {
  const app::SettingsStore settings(settings_file, {.cancel = &cancel});
  const auto account = AccountSettings::Load(settings);
  if (!account) return account.error();
  const auto options = LoadMessageOptions(settings, *account);
  // With such an account no message goes out, which whoever sends is told.
  if (!options && options.error().failure == Failure::kNotConfigured) return RelatedPictures();
  if (!options) return options.error();
  return LookForPictures(document, *options, cancel);
}

Result<std::string> SendToMyself(const compose::MessageDocument& document, const app::Program& program,
                                 const recipients::RecipientGroup& group, std::int64_t position,
                                 const platform::CancelToken& cancel) {
  const app::SettingsStore settings(program.settings.file(), {.cancel = &cancel});
  const auto account = AccountSettings::Load(settings);
  if (!account) return account.error();
  const auto row =
      RowAt(recipients::RecipientStore(program.folders.Database(), {.cancel = &cancel}), group, position, cancel);
  if (!row) return row.error();
  const auto message = Compile(document, program, settings, *account);
  if (!message) return message.error();
  const std::string& own = (*account)[AccountKey::kEmail];
  RenderedMessage rendered;
  const auto made = RenderFor(*row, own, **message, rendered);
  if (!made) return made.error();
  const auto outcome = SendAlone(*account, rendered, program.clock, cancel, [](std::string_view) {});
  if (!outcome) return outcome.error();
  if (outcome->state == smtp::State::kSent) {
    return fmt::format("The message for {} is on its way to {}.", platform::Printable(row->email(), 80), own);
  }
  return OutcomeText(*outcome);
}

}  // namespace quillcast::sending
