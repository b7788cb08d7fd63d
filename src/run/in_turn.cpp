#include "run/in_turn.h"

#include "smtp/envelope_address.h"

namespace quillcast::run {
namespace {

// Of those whose domain has had enough for now.
constexpr std::size_t kMostKeptBack = 1000;
// Results that wait for an earlier one.
constexpr std::size_t kMostAhead = 10'000;

}  // namespace

Result<bool> InTurn::NextOfList(recipients::Recipient& recipient, std::int64_t& position) {
  if (at_end_) return false;
  auto next = run_.Next(recipient, position);
  at_end_ = !next || !*next;
  return next;
}

Result<bool> InTurn::Next(recipients::Recipient& recipient, std::int64_t& position, Turn& turn) {
  wait_.reset();
  turn = {};
  auto next = NextOfAll(recipient, position, turn);
  if (next && !*next) next = NextRetry(recipient, position, turn);
  if (next && *next) wait_of_those_back_.reset();
  return next;
}

Result<bool> InTurn::NextOfAll(recipients::Recipient& recipient, std::int64_t& position, Turn& turn) {
  if (HasPace()) {
    auto kept = NextKeptBack(recipient, position, turn);
    if (!kept || *kept || (!kept_back_.empty() && EverybodyWaits())) return kept;
  }
  while (kept_back_.size() < kMostKeptBack && order_.size() < kMostAhead) {
    auto next = NextOfList(recipient, position);
    if (!next || !*next) return next;
    order_.Take(position, recipient.email(), run_.before());
    if (!HasPace()) return true;
    const auto address = smtp::EnvelopeAddress(recipient.email());
    if (!address) return true;
    turn.domain = DomainOf(address->domain());
    if (MayGo(turn)) return true;
    kept_back_.push_back({position, turn.domain, 0});
    run_.Settled(position, smtp::Left());  // a loss of power leaves no doubt about it
    if (EverybodyWaits()) return false;
  }
  return false;
}

// One that is due and has no turn joins those who are kept back.
Result<bool> InTurn::NextRetry(recipients::Recipient& recipient, std::int64_t& position, Turn& turn) {
  if (!retries_.IsOneDue() || (HasPace() && EverybodyWaits())) return false;
  while (kept_back_.size() < kMostKeptBack) {
    const auto retry = retries_.TakeDue();
    if (!retry) return false;
    turn = {retry->domain};
    if (!HasPace() || MayGo(turn)) return Again(*retry, recipient, position, turn);
    kept_back_.push_back(*retry);
    if (EverybodyWaits()) return false;
  }
  return false;
}

// The turn of somebody whose row cannot be read is free for others.
Result<bool> InTurn::Again(const Retry& whom, recipients::Recipient& recipient, std::int64_t& position, Turn& turn) {
  position = whom.position;
  if (auto read = run_.Again(position, recipient); !read) {
    if (turns_ != nullptr) turns_->GiveBack(turn);
    return read.error();
  }
  if (whom.tries > 0) order_.TakeAgain(position, recipient.email(), whom.tries + 1, whom.before);
  return true;
}

Result<bool> InTurn::NextKeptBack(recipients::Recipient& recipient, std::int64_t& position, Turn& turn) {
  for (auto each = kept_back_.begin(); each != kept_back_.end(); ++each) {
    turn = {each->domain};
    if (IsDue(turn) && MayGo(turn)) {
      const KeptBack whom = *each;
      kept_back_.erase(each);
      return Again(whom, recipient, position, turn);
    }
    if (EverybodyWaits()) break;
  }
  return false;
}

smtp::Passage InTurn::TakesTurn(Turn& turn) {
  using enum smtp::Passage;
  if (!HasPace()) return kFree;
  wait_ = wait_of_those_back_;
  const bool goes = IsDue(turn) && MayGo(turn);
  const bool nobody_may = !goes && EverybodyWaits();
  wait_of_those_back_ = goes ? std::nullopt : wait_;
  if (goes) return kFree;
  return nobody_may ? kAllHeld : kHeld;
}

std::optional<Wait> InTurn::TakeWait() {
  if (wait_of_those_back_) WaitFor(*wait_of_those_back_);
  wait_of_those_back_.reset();
  return wait_;
}

// By what is known, which costs no look into the file of all runs.
bool InTurn::IsDue(Turn& turn) {
  const Wait known = turns_->Due(turn.domain);
  if (known.why) WaitFor(known);
  return !known.why;
}

bool InTurn::MayGo(Turn& turn) {
  const Wait wait = turns_->Take(turn);
  if (wait.why) WaitFor(wait);
  return !wait.why;
}

bool InTurn::EverybodyWaits() {
  const Wait wait = turns_->Due();
  if (wait.why) WaitFor(wait);
  return wait.why.has_value();
}

// The soonest of all.
void InTurn::WaitFor(const Wait& wait) {
  if (!wait_ || wait.until < wait_->until) wait_ = wait;
}

}  // namespace quillcast::run
