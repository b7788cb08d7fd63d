// Who is next, and what they wait for.
#include <utility>

#include "run/letter_run.h"
#include "run/pace/pace_words.h"
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

}  // namespace

smtp::Job* LetterRun::NextJob() {
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

void LetterRun::Waiting() {
  telling_.Flush();
  if (run_) run_->Show();
}

void LetterRun::TellWait(const Sentence& why, Moment until) {
  telling_.CatchUpProgress(InRange());
  listener_.Waits(why, until);
}

// A run that comes to nobody any more has nothing to hold, and does not wait for a server.
bool LetterRun::IsHeld() {
  const bool has_more = !IsNobodyLeft();
  const bool by_person = has_more && listener_.IsHeld();
  if (waits_ == Waits::kForPerson && !by_person) listener_.LetGo();
  waits_ = by_person ? Waits::kForPerson : IsHeldUp() && has_more ? Waits::kForServer : Waits::kForTurn;
  return waits_ != Waits::kForTurn;
}

// The server asked for fewer messages, and the next one is not due yet.
bool LetterRun::IsHeldUp() {
  if (!slow_down_) return false;
  if (const auto faster = slow_down_->GoFaster()) listener_.Note(*faster);
  return slow_down_->Due() > parts_.clock.Monotonic();
}

std::optional<platform::Instant> LetterRun::WaitUntil(platform::Instant due, const Sentence& why) {
  TellWait(why, MomentOf(due));
  return due;
}

Moment LetterRun::MomentOf(platform::Instant due) const {
  const auto moment = parts_.clock.Now() + (due - parts_.clock.Monotonic());
  return std::chrono::time_point_cast<Moment::duration>(moment);
}

// By what NextJob found: what was not due then may be so by now, and is still to come.
std::optional<platform::Instant> LetterRun::NextDue() {
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

void LetterRun::TakeMessage(Letter& letter) {
  if (letter.rendered) return;
  if (free_messages_.empty()) free_messages_.push_back(std::make_unique<message::RenderedMessage>());
  letter.rendered = std::move(free_messages_.back());
  free_messages_.pop_back();
}

// Makes the row's letter; or says why it failed before any server was asked.
std::optional<smtp::Outcome> LetterRun::RenderRow(Letter& letter) {
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

// The first that can be kept: what keeps one out (its size, a disk that is full for a moment) may let the next one in.
void LetterRun::KeepFirstMessage(const message::RenderedMessage& message) {
  if (first_message_kept_) return;
  const auto kept = platform::ReplaceFile(copy_, [&](int fd) { return message::WriteMessage(message, fd, copy_); });
  first_message_kept_ = static_cast<bool>(kept);
  if (kept || std::exchange(told_of_no_copy_, true)) return;
  listener_.Note(
      Say("The history has no copy of the first message. {} It keeps the first that it can.", AsLines(kept.error())));
}

}  // namespace quillcast::run
