#include "run/sending_run.h"

#include <deque>
#include <memory>
#include <utility>
#include <vector>

#include "run/in_turn.h"
#include "run/pace/pace_words.h"
#include "run/partial_range.h"
#include "run/pre_flight.h"
#include "run/results_in_order.h"
#include "run/run_telling.h"
#include "run/slow_down.h"
#include "run/those_lost.h"
#include "smtp/envelope_address.h"
#include "smtp/result_code.h"

namespace quillcast::run {
namespace {

// How often whoever holds a run is asked whether it goes on.
constexpr std::chrono::milliseconds kHeldFor{500};

// The report's name for a failure of ours, before any server was asked.
smtp::Outcome FailureOfOurs(smtp::ResultCode code, const Error& error) {
  return {.state = smtp::State::kFailed, .code = code, .reply = {}, .reason = Describe(error)};
}

// A recipient's message on its way. Once its outcome is known the message itself goes to another letter: thousands may
// wait to be told of behind one that a slow connection has.
struct Letter : smtp::Job {
  Turn turn;
  std::unique_ptr<message::RenderedMessage> rendered;
  bool is_out = false;
  std::int64_t lost_before = 0;  // when it went out last
};

// Takes the rows of the group one by one, from the store to the wire to the report.
class Run final : public smtp::JobSource {
 public:
  Run(const RunParts& parts, HistoryEntry entry, RunListener& listener)
      : parts_(parts),
        listener_(listener),
        history_(std::move(entry.base)),
        copy_(std::move(entry.message)),
        range_(parts.range.value_or(PartialRange{1, parts.recipients})),
        retries_(parts.retries, parts.clock),
        telling_(RunReport(
                     std::move(entry.report), [&listener](std::string_view line) { listener.ReportLine(line); },
                     parts.carrier.delivery()),
                 listener, summary_, order_, parts.turns == nullptr ? nullptr : &retries_) {
    if (parts.slow_down) slow_down_.emplace(parts.clock);
  }

  RunSummary Execute();

  smtp::Job* NextJob() override;
  std::optional<platform::Instant> NextDue() override;
  void Finished(smtp::Job& job, const smtp::Outcome& outcome) override;
  void GoesOut(smtp::Job& job) override;
  void ComesBack(smtp::Job& job, const smtp::Outcome& why) override;
  smtp::Passage MayGo(smtp::Job& job) override;
  void Decided(smtp::Job& job, const smtp::Outcome& outcome) override;
  bool CaughtUp() override;
  void Connected(const smtp::Capabilities& offered) override;
  void WayLost(const smtp::Outcome& why, platform::Instant until) override;
  void WayGivenUp(const smtp::Outcome& why) override;
  bool GoOn(const smtp::Outcome& refusal, int times) override;
  platform::Duration HeldFor() override { return listener_.HeldFor(); }
  void LogLine(std::string_view line) override;
  void Waiting() override;
  void Progress(std::uint64_t sent, std::uint64_t total) override { telling_.Progress(InRange(), sent, total); }

 private:
  void TellWait(const Sentence& why, Moment until);
  std::int64_t InRange() const { return run_ ? run_->size() : SizeOf(range_); }
  bool IsCancelled() const { return parts_.cancel.Requested() != platform::Stop::kNone; }
  bool MayGoOn() const { return !IsCancelled() && !summary_.stopped; }
  bool Begin();
  void OpenThoseLeft();
  void TakeSize();
  bool NextOf(Result<bool> next);
  bool IsNobodyLeft() const { return taken_ == run_->size() && summary_.retries_left == 0 && not_out_ == 0; }
  bool IsHeld();
  bool IsHeldUp();
  std::optional<platform::Instant> WaitUntil(platform::Instant due, const Sentence& why);
  Moment MomentOf(platform::Instant due) const;
  bool NextLeft();
  void TakeMessage(Letter& letter);
  std::optional<smtp::Outcome> RenderRow(Letter& letter);
  void KeepFirstMessage(const message::RenderedMessage& message);
  void TellThoseReady();
  void Record();
  void End();
  void NameThoseNotTried();
  void KeepLost(const Letter& letter, const smtp::Outcome& outcome);
  void SettleThoseLost();
  void TellAboutPictures();

  const RunParts& parts_;
  RunListener& listener_;
  const std::string history_;         // the run's base name there
  const std::filesystem::path copy_;  // of the first message
  PartialRange range_;
  RunSummary summary_;
  std::unique_ptr<JournalledRun> run_;           // none where it could not begin; then, where they can be read:
  std::unique_ptr<recipients::RowSource> rows_;  // those who are left
  std::optional<recipients::RowWalk> walk_;      // over rows_
  bool unreadable_ = false;                      // a row
  ResultsInOrder order_;
  Retries retries_;
  RunTelling telling_;
  std::optional<SlowDown> slow_down_;
  std::int64_t not_out_ = 0;  // of those with the carrier
  // What those who are next wait for, by what was found when one was asked for last.
  enum class Waits { kForTurn, kForPerson, kForServer } waits_ = Waits::kForTurn;
  std::int64_t taken_ = 0;         // of the list
  std::optional<InTurn> in_turn_;  // over run_
  bool broken_ = false;            // the journal
  recipients::Recipient row_;
  std::int64_t position_ = 0;                     // of row_
  std::vector<std::unique_ptr<Letter>> letters_;  // all that were ever needed at a time
  std::vector<Letter*> free_letters_;             // the one used last at the end, so that few are kept warm
  std::vector<std::unique_ptr<message::RenderedMessage>> free_messages_;
  std::deque<Letter*> with_carrier_;  // in the order in which it took them
  std::optional<ThoseLost> lost_;     // over run_
  bool does_not_go_on_ = false;       // as somebody wanted
  bool first_message_kept_ = false;
  bool told_of_no_copy_ = false;
  bool told_of_notices_ = false;
  bool way_lost_ = false;
};

RunSummary Run::Execute() {
  telling_.report().Started();
  if (!Begin()) OpenThoseLeft();  // not frozen, no run; but who is in the group can still be told
  telling_.report().SendingTo(InRange(), parts_.range && InRange() > 0 ? std::optional(range_) : parts_.range);
  telling_.Progress(InRange(), 0, 0);
  TellAboutPictures();
  telling_.Flush();  // what cannot be recorded is not begun
  if (run_) parts_.carrier.Carry(*this);
  if (!summary_.stopped) summary_.stopped = parts_.carrier.trouble();
  NameThoseNotTried();
  if (run_) SettleThoseLost();
  End();
  summary_.history = history_;
  summary_.delivery = parts_.carrier.delivery();
  summary_.cancelled = IsCancelled() && summary_.not_tried + summary_.retries_left > 0;
  telling_.report().Completed(summary_);
  telling_.Flush();
  return summary_;
}

bool Run::Begin() {
  auto run = parts_.begin(history_);
  if (!run) {
    if (MayGoOn()) summary_.stopped = run.error();
    return false;
  }
  run_ = std::move(*run);
  summary_.run = run_->id();
  telling_.Began(*run_);
  in_turn_.emplace(*run_, parts_.turns, order_, retries_);
  lost_.emplace(*run_);
  TakeSize();
  return true;
}

void Run::OpenThoseLeft() {
  auto rows = parts_.rows();
  if (!rows) return;  // they are counted by what was known before
  rows_ = std::move(*rows);
  walk_.emplace(*rows_, parts_.range);
}

// The group may have changed while whoever sends was asked, and goes on changing: what was frozen is who gets it.
void Run::TakeSize() {
  const std::int64_t size = run_->list_size();
  range_ = parts_.range ? UpTo(size, *parts_.range) : PartialRange{1, size};
  summary_.last = range_.last;
  if (parts_.range) summary_.skipped = size - SizeOf(range_);
  if (size != parts_.recipients) {
    listener_.Note(SayOf(size, "The group has changed meanwhile: it has {} recipient now, not {}.",
                         "The group has changed meanwhile: it has {} recipients now, not {}.",
                         NumberValue(parts_.recipients)));
  }
  if (InRange() == 0) {
    summary_.stopped = Error{Failure::kUsage, "Nobody is left in the list to send to.", "Choose the recipients anew."};
  } else if (parts_.range && range_.last < parts_.range->last) {
    listener_.Note(Say("The list ends with #{}, so #{} to #{} of the part are nobody.", range_.last, range_.last + 1,
                       parts_.range->last));
  }
}

bool Run::NextOf(Result<bool> next) {
  unreadable_ = unreadable_ || !next;
  if (!next && !summary_.stopped) summary_.stopped = next.error();
  return next && *next;
}

// The next of those who were not come to, or false at the end of the list.
bool Run::NextLeft() {
  if (run_) return NextOf(in_turn_->NextOfList(row_, position_));
  if (!walk_ || !NextOf(walk_->Next(row_))) return false;
  position_ = walk_->position();
  return true;
}

smtp::Job* Run::NextJob() {
  if (free_letters_.empty()) free_letters_.push_back(letters_.emplace_back(std::make_unique<Letter>()).get());
  Letter* letter = free_letters_.back();
  while (MayGoOn() && !IsHeld() && NextOf(in_turn_->Next(row_, position_, letter->turn))) {
    if (order_.At(position_).tries == 1) ++taken_;
    auto failure = RenderRow(*letter);
    if (!failure) {
      if (slow_down_) slow_down_->Taken();
      free_letters_.pop_back();
      letter->is_out = false;
      ++not_out_;
      with_carrier_.push_back(letter);
      return letter;
    }
    if (parts_.turns != nullptr) parts_.turns->GiveBack(letter->turn);
    RecipientInOrder& recipient = order_.At(position_);
    recipient.stage = RecipientInOrder::Stage::kFailedHere;
    recipient.outcome = StaysInDoubt(recipient, *failure) ? AsInDoubt(*std::move(failure)) : *std::move(failure);
    TellThoseReady();
  }
  return nullptr;
}

void Run::Waiting() {
  telling_.Flush();
  if (run_) run_->Show();
}

void Run::TellWait(const Sentence& why, Moment until) {
  telling_.CatchUpProgress(InRange());
  listener_.Waits(why, until);
}

// A run that comes to nobody any more has nothing to hold, and does not wait for a server.
bool Run::IsHeld() {
  const bool has_more = !IsNobodyLeft();
  const bool by_person = has_more && listener_.IsHeld();
  if (waits_ == Waits::kForPerson && !by_person) listener_.LetGo();
  waits_ = by_person ? Waits::kForPerson : IsHeldUp() && has_more ? Waits::kForServer : Waits::kForTurn;
  return waits_ != Waits::kForTurn;
}

// The server asked for fewer messages, and the next one is not due yet.
bool Run::IsHeldUp() {
  if (!slow_down_) return false;
  if (const auto faster = slow_down_->GoFaster()) listener_.Note(*faster);
  return slow_down_->Due() > parts_.clock.Monotonic();
}

std::optional<platform::Instant> Run::WaitUntil(platform::Instant due, const Sentence& why) {
  TellWait(why, MomentOf(due));
  return due;
}

Moment Run::MomentOf(platform::Instant due) const {
  const auto moment = parts_.clock.Now() + (due - parts_.clock.Monotonic());
  return std::chrono::time_point_cast<Moment::duration>(moment);
}

// By what NextJob found: what was not due then may be so by now, and is still to come.
std::optional<platform::Instant> Run::NextDue() {
  if (!MayGoOn()) return {};
  if (run_) run_->Show();
  if (waits_ == Waits::kForPerson) {
    telling_.CatchUpProgress(InRange());
    listener_.Held(std::ssize(with_carrier_) - not_out_);
    return parts_.clock.Monotonic() + kHeldFor;  // soon: the connections are kept as in any short wait
  }
  if (waits_ == Waits::kForServer)
    return WaitUntil(slow_down_->Due().value_or(parts_.clock.Monotonic()), slow_down_->Why());
  const auto wait = in_turn_->TakeWait();
  const auto turn = wait ? std::optional(parts_.turns->InstantOf(wait->until)) : std::nullopt;
  const bool for_a_domain = wait && wait->why == PaceRule::kDomain;  // which a retry to another does not wait for
  const auto retry = retries_.NextDue();
  const auto now = parts_.clock.Monotonic();
  const bool before_turn = for_a_domain && retry && retry < turn && retry > now;
  if (retry && (!turn || before_turn)) {
    return WaitUntil(*retry, WaitForRetries(retries_.size()));
  }
  if (turn) TellWait(WhyOf(*wait, parts_.turns->rules()), wait->until);
  return turn;
}

void Run::TakeMessage(Letter& letter) {
  if (letter.rendered) return;
  if (free_messages_.empty()) free_messages_.push_back(std::make_unique<message::RenderedMessage>());
  letter.rendered = std::move(free_messages_.back());
  free_messages_.pop_back();
}

// Makes the row's letter; or says why it failed before any server was asked.
std::optional<smtp::Outcome> Run::RenderRow(Letter& letter) {
  if (const auto& trouble = parts_.message.trouble()) return FailureOfOurs(trouble->code, trouble->error);
  const auto address = smtp::EnvelopeAddress(row_.email());
  if (!address) return FailureOfOurs(smtp::ResultCode::kRecipientRefused, address.error());
  TakeMessage(letter);
  const auto rendered = parts_.message.Render(row_, *address, position_, *letter.rendered);
  if (!rendered) return FailureOfOurs(smtp::ResultCode::kOutOfMemory, rendered.error());
  KeepFirstMessage(*letter.rendered);
  letter.envelope = letter.rendered->envelope;
  letter.message = letter.rendered.get();
  letter.position = position_;
  letter.turn.domain = DomainOf(address->domain());
  return {};
}

void Run::GoesOut(smtp::Job& job) {
  auto& letter = static_cast<Letter&>(job);
  run_->GoesOut(letter.position);
  if (parts_.turns != nullptr) parts_.turns->GoesOut(letter.turn);
  if (slow_down_) slow_down_->WentOut();
  letter.lost_before = lost_->count();
  if (!std::exchange(letter.is_out, true)) --not_out_;
}

// It may wait long now, and this program may be ended meanwhile.
void Run::ComesBack(smtp::Job& job, const smtp::Outcome& why) {
  auto& letter = static_cast<Letter&>(job);
  run_->Settled(letter.position, smtp::Left());
  if (parts_.turns != nullptr) parts_.turns->ComesBack(letter.turn);
  if (std::exchange(letter.is_out, false)) ++not_out_;
  if (!slow_down_) return;
  if (const auto slower = slow_down_->CameBack(why)) listener_.Note(*slower);
}

// As anybody else who is next. What ends a run decides of those whom it took as well.
smtp::Passage Run::MayGo(smtp::Job& job) {
  using enum smtp::Passage;
  if (!MayGoOn()) return kFree;
  if (IsHeld()) return kAllHeld;
  auto& letter = static_cast<Letter&>(job);
  if (parts_.turns != nullptr) parts_.turns->GiveBack(letter.turn);
  const smtp::Passage passage = in_turn_->TakesTurn(letter.turn);
  if (passage == kFree && slow_down_) slow_down_->Taken();
  return passage;
}

void Run::Decided(smtp::Job& job, const smtp::Outcome& outcome) {
  auto& letter = static_cast<Letter&>(job);
  RecipientInOrder& recipient = order_.At(letter.position);
  const bool in_doubt = StaysInDoubt(recipient, outcome);
  run_->Settled(letter.position, in_doubt ? AsInDoubt(outcome) : outcome);
  if (!std::exchange(letter.is_out, true)) --not_out_;
  if (parts_.turns != nullptr) parts_.turns->GiveBack(letter.turn);
  const int tries = recipient.before.tries + recipient.tries;
  // Once the account is put right, whoever goes on with the run goes on with those too whom its fault refused.
  const bool is_tried_again = parts_.turns != nullptr && retries_.Takes(outcome, tries);
  if (!in_doubt && (is_tried_again || smtp::IsOfSignIn(outcome))) run_->IsTriedAgain(letter.position, tries);
  recipient.subject_not_encoded = letter.rendered->subject_not_encoded;
  if (outcome.is_decided()) KeepLost(letter, outcome);
  letter.message = nullptr;
  free_messages_.push_back(std::move(letter.rendered));
  if (!slow_down_) return;
  if (const auto slower = slow_down_->Decided(outcome)) listener_.Note(*slower);
}

void Run::LogLine(std::string_view line) {
  telling_.LogLine(line, with_carrier_.empty() ? std::nullopt : std::optional(with_carrier_.front()->position));
}

void Run::Finished(smtp::Job& job, const smtp::Outcome& outcome) {
  auto& letter = static_cast<Letter&>(job);
  RecipientInOrder& recipient = order_.At(letter.position);
  recipient.stage = outcome.is_decided() ? RecipientInOrder::Stage::kSettled : RecipientInOrder::Stage::kLeft;
  recipient.outcome = StaysInDoubt(recipient, outcome) ? AsInDoubt(outcome) : outcome;
  with_carrier_.pop_front();
  telling_.EndLines();
  free_letters_.push_back(&letter);
  TellThoseReady();
}

void Run::TellThoseReady() {
  if (telling_.TellThoseReady() && with_carrier_.empty()) CaughtUp();
}

// One write for all results that came together, before anything more is sent: after a kill report and journal still
// know everybody whose result this process knew when it last spoke to the server, and the journal who was under way.
bool Run::CaughtUp() {
  Record();
  telling_.Flush();
  if (parts_.turns != nullptr && !broken_) parts_.turns->Record();  // the last, as near to the first octet as can be
  return !broken_ && !telling_.report().trouble();
}

void Run::Record() {
  const auto recorded = run_->Record();
  if (recorded) return;
  broken_ = true;
  if (!summary_.stopped) summary_.stopped = recorded.error();
}

// A journal that cannot be ended says of the run, later, that its program was lost; it still knows everybody.
void Run::End() {
  if (!run_) return;
  const auto ended = run_->End();
  if (!ended && !summary_.stopped) summary_.stopped = ended.error();
}

void Run::Connected(const smtp::Capabilities& offered) {
  if (std::exchange(way_lost_, false)) listener_.WayFound();
  if (told_of_notices_ || offered.dsn || !parts_.message.asks_for_notice()) return;
  told_of_notices_ = true;
  listener_.Note(kNoNotices);
}

// Who holds the run need not wait for the way to be told that nothing is under way.
void Run::WayLost(const smtp::Outcome& why, platform::Instant until) {
  way_lost_ = true;
  telling_.CatchUpProgress(InRange());
  listener_.WayLost(WaitForNetwork(why.reason), MomentOf(until));
  if (IsHeld() && waits_ == Waits::kForPerson) listener_.Held(0);
}

void Run::WayGivenUp(const smtp::Outcome& why) {
  if (!summary_.stopped) summary_.stopped = NetworkStaysAway(why.reason);
}

bool Run::GoOn(const smtp::Outcome& refusal, int times) {
  if (smtp::IsOfWay(refusal) && !lost_->AreManyAnew()) return true;
  summary_.not_their_doing += lost_->Leave();
  Record();          // the answer may take days, and the program may be killed meanwhile
  telling_.Flush();  // who is asked may read it
  does_not_go_on_ = !listener_.GoOn(refusal, times, summary_.not_their_doing);
  return !does_not_go_on_;
}

// How far the server came with one whose end was out without an answer nobody knows; and who is tried again by itself
// is no reason to ask.
void Run::KeepLost(const Letter& letter, const smtp::Outcome& outcome) {
  if (smtp::IsOfSignIn(outcome) || outcome.state == smtp::State::kUnknown) return;
  if (!outcome.no_way && !smtp::IsOfWay(outcome) && !smtp::IsOfSender(outcome)) {
    summary_.not_their_doing += lost_->Fail(letter.lost_before);
    return;
  }
  const RecipientInOrder& recipient = order_.At(letter.position);
  const int tries = recipient.before.tries + recipient.tries;
  if (StaysInDoubt(recipient, outcome)) return lost_->AddInDoubt(recipient.position);
  if (parts_.turns != nullptr && retries_.Takes(outcome, tries)) return;
  lost_->Add(recipient.position, recipient.before.tries, tries, outcome);
}

// Of the last in a row nobody knows what came behind them, where the run ended before its list, reached nobody at all,
// or lost too many for it to be something of each. But at whom a server that was there hung up again, when all of them
// were asked a second time, that is theirs.
void Run::SettleThoseLost() {
  const bool reached_nobody = summary_.sent == 0 && summary_.failed == summary_.not_their_doing + lost_->in_a_row();
  const bool is_cut_short = summary_.stopped || IsCancelled() || does_not_go_on_;
  if (!is_cut_short && !reached_nobody && lost_->MayBeTheirDoing())
    summary_.not_their_doing += lost_->Fail(lost_->count());
  if (!is_cut_short) lost_->FailThoseLostTwice();
  summary_.not_their_doing += lost_->Leave();
}

// Whatever ended the run: a cancel, a full disk, a refusal that nobody wanted to go on after. Those who cannot be named
// are counted by what is known of the list.
void Run::NameThoseNotTried() {
  order_.LeaveTheWaiting();
  TellThoseReady();
  telling_.TellThoseLeft();
  while (NextLeft()) telling_.NotTried({position_, row_.email(), run_ ? run_->before().state : ResultState::kNotTried});
  if ((run_ || walk_) && !unreadable_) return;
  summary_.not_tried = InRange() - summary_.sent - summary_.failed;
  summary_.last = range_.last;
  summary_.first_left = range_.last - summary_.not_tried + 1;
}

// The first that can be kept: what keeps one out (its size, a disk that is full for a moment) may let the next one in.
void Run::KeepFirstMessage(const message::RenderedMessage& message) {
  if (first_message_kept_) return;
  const auto kept = platform::ReplaceFile(copy_, [&](int fd) { return message::WriteMessage(message, fd, copy_); });
  first_message_kept_ = static_cast<bool>(kept);
  if (kept || std::exchange(told_of_no_copy_, true)) return;
  listener_.Note(
      Say("The history has no copy of the first message. {} It keeps the first that it can.", AsLines(kept.error())));
}

void Run::TellAboutPictures() {
  const auto& troubles = parts_.message.picture_troubles();
  if (troubles.empty()) return;
  telling_.report().BodyNotLoaded(troubles.front().code);  // the body is loaded once and has one result
  for (const auto& trouble : troubles) {
    listener_.Note(message::GoesWithout(trouble));
  }
}

}  // namespace

RunSummary SendLetters(const RunParts& parts, HistoryEntry entry, RunListener& listener) {
  listener.Began(entry.report.path());
  return Run(parts, std::move(entry), listener).Execute();
}

}  // namespace quillcast::run
