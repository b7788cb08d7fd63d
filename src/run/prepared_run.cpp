#include "run/prepared_run.h"

#include <utility>

#include "account/account_message.h"
#include "account/key_roles.h"
#include "domain/sender/account_sender.h"
#include "domain/sender/kept_check.h"
#include "platform/text.h"
#include "run/carrier.h"
#include "run/kept_runs.h"
#include "run/range_ends.h"
#include "run/sent_before.h"
#include "run/single_message.h"
#include "smtp/outcome_text.h"

namespace quillcast::run {
namespace {

// Of the last check of the account's domain; it is not made anew here.
std::optional<Sentence> RememberDomain(const account::AccountSettings& account, const RunPlace& place) {
  const auto question = domain::QuestionOf(account);
  if (!question) return std::nullopt;
  return IgnoreErrors(domain::RememberSenderCheck(place.Settings(), question->domain, place.clock.Now()), std::nullopt);
}

// Who keeps no runs yet is not made to begin with it.
std::optional<Sentence> RememberRuns(const document::MessageDocument& document, const recipients::RecipientGroup& group,
                                     const RunPlace& place) {
  if (!std::filesystem::exists(place.folders.RunJournal(), IgnoreErrors())) return std::nullopt;
  const auto journal = OpenJournal(place.folders, place.clock, place.cancel);
  if (!journal) return std::nullopt;  // the run itself says why
  return IgnoreErrors(SentBefore(**journal, document, group, place.clock), std::nullopt);
}

}  // namespace

using account::AccountSettings;
using message::MessageOptions;
using message::MessageTemplate;

Result<PreparedRun> Prepare(document::MessageDocument document, std::string_view group, const RunPlace& place) {
  const auto store = place.Recipients();
  auto found = store.FindGroup(group);
  if (!found) return found.error();
  ChosenGroup chosen;
  chosen.group.name = group;
  if (*found) {
    const auto count = store.CountRecipients(group);
    if (!count) return count.error();
    chosen = {std::move(**found), *count};
  }
  return Prepare(std::move(document), std::move(chosen), place);
}

PreparedRun Prepare(document::MessageDocument document, ChosenGroup group, const RunPlace& place) {
  return {std::move(document), std::move(group), place};
}

PreparedRun::PreparedRun(document::MessageDocument document, ChosenGroup group, const RunPlace& place)
    : document_(std::move(document)), group_(std::move(group)), place_(place) {}

Result<const AccountSettings*> PreparedRun::Account() {
  if (!account_) {
    auto account = AccountSettings::Load(place_.Settings());
    if (!account) return account.error();
    account_ =
        going_on_ ? account::WithMessageOf(*std::move(account), going_on_->frozen.inputs.account) : std::move(*account);
  }
  return &*account_;
}

Result<const MessageOptions*> PreparedRun::Options() {
  if (!options_) {
    const auto account = Account();
    if (!account) return account.error();
    auto format = going_on_ ? Result(going_on_->frozen.inputs.body_format) : account::LoadBodyFormat(place_.Settings());
    if (!format) return format.error();
    auto options = account::MessageOptionsOf(**account, *format);
    if (!options) return options.error();
    body_format_ = *std::move(format);
    options_ = std::move(*options);
  }
  return &*options_;
}

void PreparedRun::CompileFrom(const message::FileSource& files, const MessageOptions& options) {
  message_ = std::make_unique<MessageTemplate>(document_, options, place_.folders.temporary, place_.clock,
                                               place_.entropy, files);
}

Result<const MessageTemplate*> PreparedRun::Message() {
  if (!message_) {
    const auto options = Options();
    if (!options) return options.error();
    const message::DocumentFiles files(document_);
    CompileFrom(going_on_ ? static_cast<const message::FileSource&>(going_on_->frozen.files) : files, **options);
  }
  return message_.get();
}

Result<recipients::RecipientCursor> PreparedRun::Rows() const {
  return place_.Recipients().ListRecipients(group_.group.id, group_.group.sort_sql);
}

Result<SendingFacts> PreparedRun::Facts(Delivery delivery) {
  const auto filled_in = account::AccountIsFilledIn(place_.Settings());
  if (!filled_in) return filled_in.error();
  auto groups = place_.Recipients().ListGroupNames();
  if (!groups) return groups.error();
  return SendingFacts{.account_filled_in = *filled_in || delivery == Delivery::kWritten,
                      .groups = std::move(*groups),
                      .group = group_.group.name,
                      .recipients = group_.recipients,
                      .subject = document_.subject,
                      .body_text = document_.PlainText(),
                      .group_is_there = group_.group.id != 0};
}

Result<message::RelatedPictures> PreparedRun::LookForPictures() {
  const auto account = Account();
  if (!account) return account.error();
  const auto options = Options();
  // With such an account no message goes out, which whoever sends is told.
  if (!options && options.error().failure == Failure::kNotConfigured) return message::RelatedPictures();
  if (!options) return options.error();
  return message::LookForPictures(document_, **options, place_.cancel);
}

void PreparedRun::AnswerAboutPictures(const std::vector<std::filesystem::path>& files, bool take) {
  document_.picture_places.Answer(files, take);
  message_.reset();
}

Result<MessageLook> PreparedRun::LookOver(Server server) {
  const auto message = Message();
  if (!message) return message.error();
  auto rows = Rows();
  if (!rows) return rows.error();
  const auto found = run::LookOver(*rows, document_, **message, place_.cancel);
  if (!found) return found.error();
  std::optional<Sentence> notices;
  if (server == Server::kIsAsked) notices = AskAboutNotices(*account_, **message, place_.clock, place_.cancel);
  MessageLook look = LookOf(**message, *found, notices);
  look.domain = RememberDomain(*account_, place_);
  if (!going_on_) look.before = RememberRuns(document_, group_.group, place_);
  return look;
}

Result<recipients::Recipient> PreparedRun::RecipientAt(std::int64_t position) const {
  auto rows = Rows();
  if (!rows) return rows.error();
  return FindRowAt(*rows, position, place_.cancel);
}

Result<recipients::Recipient> PreparedRun::RecipientWith(std::string_view address) const {
  auto rows = Rows();
  if (!rows) return rows.error();
  return FindRow(*rows, address);
}

std::string PreparedRun::EndsOf(const PartialRange& range) const {
  auto names = place_.Recipients().ListNames(group_.group.id, group_.group.sort_sql);
  return names ? run::EndsOf(*names, range, place_.cancel) : std::string();
}

Result<message::Parts> PreparedRun::Parts() {
  const auto options = Options();
  if (!options && options.error().failure != Failure::kNotConfigured) return options.error();
  return message::PartsOf(document_, options ? **options : MessageOptions());
}

Result<RecipientView> PreparedRun::View(std::int64_t position) {
  const auto recipient = RecipientAt(position);
  if (!recipient) return recipient.error();
  const auto parts = Parts();
  if (!parts) return parts.error();
  return ViewFor(document_, *parts, *recipient);
}

Result<RecipientView> PreparedRun::ViewOfTags() {
  const auto parts = Parts();
  if (!parts) return parts.error();
  return run::ViewOfTags(document_, *parts);
}

Result<void> PreparedRun::Render(const recipients::Recipient& recipient, std::string_view send_to,
                                 message::RenderedMessage& out) {
  const auto message = Message();
  if (!message) return message.error();
  return RenderFor(recipient, send_to, **message, out);
}

Result<smtp::Outcome> PreparedRun::Send(message::RenderedMessage& message,
                                        const std::function<void(std::string_view)>& log_line) {
  const auto account = Account();
  if (!account) return account.error();
  const auto options = place_.Secrets().SignInOptionsOf(**account, place_.cancel);
  if (!options) return options.error();
  SmtpCarrier carrier(*options, place_.clock, place_.cancel);
  return SendAlone(carrier, message, log_line);
}

Result<Sentence> PreparedRun::SendToMyself(std::int64_t position) {
  const auto account = Account();
  if (!account) return account.error();
  const auto recipient = RecipientAt(position);
  if (!recipient) return recipient.error();
  const std::string& own = (**account)[account::AccountKey::kEmail];
  message::RenderedMessage rendered;
  const auto made = Render(*recipient, own, rendered);
  if (!made) return made.error();
  const auto outcome = Send(rendered, [](std::string_view) {});
  if (!outcome) return outcome.error();
  if (outcome->state != smtp::State::kSent) return Sentence(smtp::OutcomeText(*outcome));
  return Say("The message for {} is on its way to {}.", platform::Printable(recipient->email(), 80), own);
}

Result<Preview> PreparedRun::WritePreview() {
  const auto options = Options();
  if (!options) return options.error();
  return run::WritePreview(document_, **options, place_);
}

Result<Exported> PreparedRun::Export(const ExportTarget& target) {
  const auto options = Options();
  if (!options) return options.error();
  return ExportMessage(document_, **options, target, place_);
}

Result<Composed> PreparedRun::Compose(const std::optional<PartialRange>& range) {
  const auto message = Message();
  if (!message) return message.error();
  if (const auto& trouble = (*message)->trouble()) return trouble->error;
  auto rows = Rows();
  if (!rows) return rows.error();
  return ComposeAll(*rows, **message, range, place_.cancel);
}

}  // namespace quillcast::run
