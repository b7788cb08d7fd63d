// A prepared run that is sent, or goes on with a mailing: over the journal.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <chrono>
#include <utility>

#include "account/account_connection.h"
#include "account/account_message.h"
#include "account/account_pace.h"
#include "account/shown_route.h"
#include "platform/text.h"
#include "run/carrier.h"
#include "run/history.h"
#include "run/journal/unjournalled_run.h"
#include "run/kept_runs.h"
#include "run/pace/pace_words.h"
#include "run/prepared_run.h"
#include "run/what_changed.h"
#include "smtp/client/connection_limit.h"

namespace quillcast::run {

using account::AccountSettings;

namespace {

// What is other by now is told since the mailing began, whoever went on with it meanwhile.
std::optional<PaceTexts> PaceAtFirst(const MailingEntry& mailing, const platform::Clock& clock) {
  for (const RunEntry& run : mailing.runs) {
    if (const auto pace = IgnoreErrors(ReadFrozenPace(run.pace, clock), std::nullopt)) return pace->account;
  }
  return {};
}

}  // namespace

Result<PreparedRun> PrepareToGoOn(RunId run, RunKind kind, const RecipientChoice& choice, const RunPlace& place) {
  auto journal = OpenJournal(place.folders, place.clock, place.cancel);
  if (!journal) return journal.error();
  auto mailing = (*journal)->Find(run);
  if (!mailing) return mailing.error();
  const auto inputs = (*journal)->Inputs(mailing->id);
  if (!inputs) return inputs.error();
  auto frozen = Thaw(*inputs, **journal);
  if (!frozen) return frozen.error();
  auto pace = ReadFrozenPace(mailing->runs.back().pace, place.clock);
  if (!pace) return pace.error();
  auto began_at = PaceAtFirst(*mailing, place.clock);
  const auto recipients = CountChosen(**journal, *mailing, choice);
  if (!recipients) return recipients.error();
  return PreparedRun({*std::move(journal), *std::move(mailing), kind, choice, *recipients, *std::move(frozen),
                      *std::move(pace), std::move(began_at)},
                     place);
}

PreparedRun::PreparedRun(GoingOn going_on, const RunPlace& place)
    : going_on_(std::move(going_on)), document_(going_on_->frozen.inputs.document), place_(place) {
  group_.group.name = going_on_->mailing.group;
  group_.recipients = going_on_->recipients;
}

Result<std::unique_ptr<recipients::RowSource>> PreparedRun::RowsForRun(recipients::Reading reading) const {
  return RowsOf(place_.Recipients(), reading);
}

// Those left over are told even where a cancel ended the freezing.
Result<std::unique_ptr<recipients::RowSource>> PreparedRun::RowsForLeft() const {
  return RowsOf(recipients::RecipientStore(place_.folders.Database(), {.lock_wait = std::chrono::seconds(1)}),
                recipients::Reading::kLive);
}

Result<std::unique_ptr<recipients::RowSource>> PreparedRun::RowsOf(const recipients::RecipientStore& store,
                                                                   recipients::Reading reading) const {
  auto rows = store.ListRecipients(group_.group.id, group_.group.sort_sql, reading);
  if (!rows) return rows.error();
  return std::unique_ptr<recipients::RowSource>(std::make_unique<recipients::RecipientCursor>(std::move(*rows)));
}

Result<std::vector<Sentence>> PreparedRun::WhatChangedSince() {
  if (!going_on_) return std::vector<Sentence>();
  const auto account = AccountSettings::Load(place_.Settings());
  if (!account) return account.error();
  auto format = account::LoadBodyFormat(place_.Settings());
  if (!format) return format.error();
  const auto group =
      LookAtGroup(*going_on_->journal, going_on_->mailing, going_on_->frozen.inputs, place_.Recipients());
  if (!group) return group.error();
  auto changes = WhatChanged(going_on_->frozen, {*account, *std::move(format), *group});
  if (going_on_->began_at) {
    const auto names = ChangedSince(*going_on_->began_at, PaceOptions(), account::PaceTextsOf(*account));
    if (!names.empty()) {
      changes.push_back(Say("Since then the account's pace has changed, and the run goes by what it is now: {}.",
                            fmt::format("{}", fmt::join(names, ", "))));
    }
  }
  return changes;
}

Result<RunSummary> PreparedRun::Run(const std::optional<PartialRange>& range, RunListener& listener) {
  const auto account = Account();
  if (!account) return account.error();
  const auto leads_there = route_ ? account::CheckRoute(**account, *route_) : Result<void>();
  if (!leads_there) return leads_there.error();
  const auto pace = Pace();
  if (!pace) return pace.error();
  auto options = place_.Secrets().SignInOptionsOf(**account, place_.cancel);
  if (!options) return options.error();
  options->per_connection = static_cast<std::size_t>(pace->per_connection);
  options->network_wait = pace->network_wait;
  options->way_was_there = WayWasThere();
  static_assert(kMostConnections == smtp::ConnectionLimit::kMost, "what may be asked for can be had");
  options->connections = static_cast<std::size_t>(pace->connections);
  SmtpCarrier carrier(*options, place_.clock, place_.cancel);
  return Run(range, listener, carrier);
}

Result<RunSummary> PreparedRun::Run(const std::optional<PartialRange>& range, RunListener& listener, Carrier& carrier) {
  if (going_on_) return RunOn(carrier, listener);
  if (carrier.delivery() == Delivery::kSent) return RunJournalled(carrier, range, listener);
  return RunOver(
      carrier, range, listener,
      [&](const std::string&) -> Result<std::unique_ptr<JournalledRun>> {
        auto rows = RowsForRun(recipients::Reading::kCopy);
        if (!rows) return rows.error();
        return std::unique_ptr<JournalledRun>(std::make_unique<UnjournalledRun>(std::move(*rows), range));
      },
      nullptr);
}

// A server of the account answered for this mailing before: what is out of reach now was lost.
bool PreparedRun::WayWasThere() const {
  const StateSet reached =
      SetOf({ResultState::kSent, ResultState::kRefused, ResultState::kDeferred, ResultState::kUnknown});
  return going_on_ && CountIn(going_on_->mailing.counts, reached) > 0 &&
         account::ServersText(going_on_->frozen.inputs.account) == account::ServersText(*account_);
}

// The messages are made of what was frozen, so that those of a run that goes on are the same.
Result<RunSummary> PreparedRun::RunJournalled(Carrier& carrier, const std::optional<PartialRange>& range,
                                              RunListener& listener) {
  const auto account = Account();
  if (!account) return account.error();
  const auto options = Options();
  if (!options) return options.error();
  const auto journal = OpenJournal(place_.folders, place_.clock, place_.cancel);
  if (!journal) return journal.error();
  const auto mailing = Freeze({.document = document_,
                               .account = **account,
                               .body_format = body_format_,
                               .group = group_.group.name,
                               .recipients = group_.recipients,
                               .range = range,
                               .group_id = group_.group.id},
                              **journal);
  if (!mailing) return mailing.error();
  const auto frozen = Thaw(*mailing, **journal);
  if (!frozen) return frozen.error();
  const FrozenFiles& files = frozen->files.files();
  if (!files.attachments.empty() || !files.pictures.empty()) CompileFrom(frozen->files, **options);
  const auto pace = PaceToFreeze();
  if (!pace) return pace.error();
  auto turns = TurnsOf(listener);
  if (!turns) return turns.error();
  const auto begin = [&](const std::string& history) -> Result<std::unique_ptr<JournalledRun>> {
    const auto rows = RowsForRun(recipients::Reading::kLive);
    if (!rows) return rows.error();
    return (*journal)->Begin(*mailing, **rows, range, {history, *pace});
  };
  return RunOver(carrier, range, listener, begin, &*turns);
}

PaceTexts PreparedRun::PaceOptions() const {
  return going_on_ && going_on_->pace ? Or(pace_, going_on_->pace->options) : pace_;
}

Result<PaceTexts> PreparedRun::TextsOfPace() {
  const auto account = Account();
  if (!account) return account.error();
  return Or(PaceOptions(), account::PaceTextsOf(**account));
}

Result<RunPace> PreparedRun::Pace() {
  const auto texts = TextsOfPace();
  if (!texts) return texts.error();
  if (const auto fault = account::FaultInPace(*account_, PaceOptions())) return account::CannotBeUsed(*fault);
  auto pace = ReadPace(*texts, place_.clock);
  if (pace && !pace->rules.begin) pace->rules.begin = BeginOfBefore();
  return pace;
}

// When the run that it goes on with was to begin, where that is still ahead and nothing else was asked for.
std::optional<Moment> PreparedRun::BeginOfBefore() const {
  if (!going_on_ || !going_on_->pace || !pace_.at.empty()) return {};
  const auto begin = going_on_->pace->begin;
  return begin > place_.clock.Now() ? begin : std::nullopt;
}

Result<std::optional<Sentence>> PreparedRun::PaceInWords() {
  const auto texts = TextsOfPace();
  if (!texts) return texts.error();
  const std::string words = account::PaceInWords(*texts);
  std::optional<Sentence> said;
  if (!words.empty()) said = Say("It goes on with this pace and these retries: {}.", platform::Printable(words, 500));
  if (const auto begin = BeginOfBefore()) {
    const Sentence waits =
        Say("It begins at {}, as it was told before; with \"none\" as its beginning it sends at once.",
            TimeText(*begin, place_.clock));
    said = said ? Say("{} {}", *said, waits) : waits;
  }
  return said;
}

Result<std::string> PreparedRun::PaceToFreeze() {
  const auto account = Account();
  if (!account) return account.error();
  const auto pace = Pace();
  if (!pace) return pace.error();
  return FrozenPaceText({PaceOptions(), account::PaceTextsOf(**account), pace->rules.begin});
}

Result<Turns> PreparedRun::TurnsOf(RunListener& listener) {
  const auto pace = Pace();
  if (!pace) return pace.error();
  return Turns(pace->rules, place_.folders.Departures(), place_.clock,
               [&listener](const Error& error) { listener.Note(AsSentence(error)); });
}

Result<RunSummary> PreparedRun::RunOver(Carrier& carrier, const std::optional<PartialRange>& range,
                                        RunListener& listener, const BeginRun& begin, Turns* turns) {
  const auto message = Message();
  if (!message) return message.error();
  const auto pace = Pace();
  if (!pace) return pace.error();
  auto entry = BeginHistoryEntry(place_.folders.History(), place_.clock, document_.subject);
  if (!entry) return entry.error();
  const RunParts parts{.message = **message,
                       .recipients = group_.recipients,
                       .range = range,
                       .begin = begin,
                       .rows = [this] { return RowsForLeft(); },
                       .carrier = carrier,
                       .cancel = place_.cancel,
                       .clock = place_.clock,
                       .turns = turns,
                       .retries = pace->retries,
                       .slow_down = pace->slow_down};
  return SendLetters(parts, std::move(*entry), listener);
}

// It begins before anything is in the history: where another program has it in hand there is no run to tell of.
Result<RunSummary> PreparedRun::RunOn(Carrier& carrier, RunListener& listener) {
  const auto message = Message();
  if (!message) return message.error();
  const auto pace = Pace();
  if (!pace) return pace.error();
  auto turns = TurnsOf(listener);
  if (!turns) return turns.error();
  auto frozen_pace = PaceToFreeze();
  if (!frozen_pace) return frozen_pace.error();
  auto entry = BeginHistoryEntry(place_.folders.History(), place_.clock, document_.subject);
  if (!entry) return entry.error();
  auto run = going_on_->journal->GoOn(going_on_->mailing.id, going_on_->kind, going_on_->choice,
                                      {entry->base, *std::move(frozen_pace)});
  if (!run) {
    std::filesystem::remove(entry->report.path(), IgnoreErrors());
    return run.error();
  }
  const RunParts parts{.message = **message,
                       .recipients = (*run)->list_size(),
                       .range = {},
                       .begin = [&](const std::string&) { return Result(std::move(*run)); },
                       .rows = {},
                       .carrier = carrier,
                       .cancel = place_.cancel,
                       .clock = place_.clock,
                       .turns = &*turns,
                       .retries = pace->retries,
                       .slow_down = pace->slow_down};
  RunSummary summary = SendLetters(parts, std::move(*entry), listener);
  summary.is_retry = going_on_->kind == RunKind::kRetry;
  if (!Holds(going_on_->choice.states, ResultState::kUnknown)) {
    summary.unknown_before = CountIn(going_on_->mailing.counts, SetOf({ResultState::kUnknown}));
  }
  return summary;
}

}  // namespace quillcast::run
