// What becomes of those who are under way, and what is kept and told of it.
#include <utility>

#include "run/letter_run.h"
#include "run/pace/pace_words.h"
#include "run/pre_flight.h"
#include "smtp/result_code.h"

namespace quillcast::run {

void LetterRun::GoesOut(smtp::Job& job) {
  auto& letter = static_cast<Letter&>(job);
  run_->GoesOut(letter.position);
  if (parts_.turns != nullptr) parts_.turns->GoesOut(letter.turn);
  if (slow_down_) slow_down_->WentOut();
  letter.lost_before = lost_->count();
  if (!std::exchange(letter.is_out, true)) --not_out_;
}

// It may wait long now, and this program may be ended meanwhile.
void LetterRun::ComesBack(smtp::Job& job, const smtp::Outcome& why) {
  auto& letter = static_cast<Letter&>(job);
  run_->Settled(letter.position, smtp::Left());
  if (parts_.turns != nullptr) parts_.turns->ComesBack(letter.turn);
  if (std::exchange(letter.is_out, false)) ++not_out_;
  if (!slow_down_) return;
  if (const auto slower = slow_down_->CameBack(why)) listener_.Note(*slower);
}

// As anybody else who is next. What ends a run decides of those whom it took as well.
smtp::Passage LetterRun::MayGo(smtp::Job& job) {
  using enum smtp::Passage;
  if (!MayGoOn()) return kFree;
  if (IsHeld()) return kAllHeld;
  auto& letter = static_cast<Letter&>(job);
  if (parts_.turns != nullptr) parts_.turns->GiveBack(letter.turn);
  const smtp::Passage passage = in_turn_->TakesTurn(letter.turn);
  if (passage == kFree && slow_down_) slow_down_->Taken();
  return passage;
}

void LetterRun::Decided(smtp::Job& job, const smtp::Outcome& outcome) {
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

void LetterRun::LogLine(std::string_view line) {
  telling_.LogLine(line, with_carrier_.empty() ? std::nullopt : std::optional(with_carrier_.front()->position));
}

void LetterRun::Finished(smtp::Job& job, const smtp::Outcome& outcome) {
  auto& letter = static_cast<Letter&>(job);
  RecipientInOrder& recipient = order_.At(letter.position);
  recipient.stage = outcome.is_decided() ? RecipientInOrder::Stage::kSettled : RecipientInOrder::Stage::kLeft;
  recipient.outcome = StaysInDoubt(recipient, outcome) ? AsInDoubt(outcome) : outcome;
  with_carrier_.pop_front();
  telling_.EndLines();
  free_letters_.push_back(&letter);
  TellThoseReady();
}

void LetterRun::TellThoseReady() {
  if (telling_.TellThoseReady() && with_carrier_.empty()) CaughtUp();
}

// One write for all results that came together, before anything more is sent: after a kill report and journal still
// know everybody whose result this process knew when it last spoke to the server, and the journal who was under way.
bool LetterRun::CaughtUp() {
  Record();
  telling_.Flush();
  if (parts_.turns != nullptr && !broken_) parts_.turns->Record();  // the last, as near to the first octet as can be
  return !broken_ && !telling_.report().trouble();
}

void LetterRun::Record() {
  const auto recorded = run_->Record();
  if (recorded) return;
  broken_ = true;
  if (summary_.stopped) return;
  summary_.stopped = recorded.error();
  summary_.stopped->what = Say("{} The last results that are told here may be kept as unknown.", recorded.error().what);
}

void LetterRun::Connected(const smtp::Capabilities& offered) {
  if (std::exchange(way_lost_, false)) listener_.WayFound();
  if (told_of_notices_ || offered.dsn || !parts_.message.asks_for_notice()) return;
  told_of_notices_ = true;
  listener_.Note(kNoNotices);
}

// Who holds the run need not wait for the way to be told that nothing is under way.
void LetterRun::WayLost(const smtp::Outcome& why, platform::Instant until) {
  way_lost_ = true;
  telling_.CatchUpProgress(InRange());
  listener_.WayLost(WaitForNetwork(why.reason), MomentOf(until));
  if (IsHeld() && waits_ == Waits::kForPerson) listener_.Held(0);
}

void LetterRun::WayGivenUp(const smtp::Outcome& why) {
  if (!summary_.stopped) summary_.stopped = NetworkStaysAway(why.reason);
}

bool LetterRun::GoOn(const smtp::Outcome& refusal, int times) {
  if (smtp::IsOfWay(refusal) && !lost_->AreManyAnew()) return true;
  lost_->Leave();
  Record();          // the answer may take days, and the program may be killed meanwhile
  telling_.Flush();  // who is asked may read it
  does_not_go_on_ = !listener_.GoOn(refusal, times, NotTheirDoing());
  return !does_not_go_on_;
}

// How far the server came with one whose end was out without an answer nobody knows; and who is tried again by itself
// is no reason to ask.
void LetterRun::KeepLost(const Letter& letter, const smtp::Outcome& outcome) {
  if (smtp::IsOfSignIn(outcome) || outcome.state == smtp::State::kUnknown) return;
  if (!outcome.no_way && !smtp::IsOfWay(outcome) && !smtp::IsOfSender(outcome)) {
    return lost_->Fail(letter.lost_before);
  }
  const RecipientInOrder& recipient = order_.At(letter.position);
  const int tries = recipient.before.tries + recipient.tries;
  if (StaysInDoubt(recipient, outcome)) return lost_->AddInDoubt(recipient.position);
  if (parts_.turns != nullptr && retries_.Takes(outcome, tries)) return;
  lost_->Add(recipient.position, recipient.before.tries, tries, outcome);
}

}  // namespace quillcast::run
