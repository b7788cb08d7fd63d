#include "run/in_turn.h"

#include "smtp/envelope_address.h"

namespace quillcast::run {
namespace {

// Of those whose domain has had enough for now.
constexpr std::size_t kMostKeptBack = 1000;
// Results that wait for an earlier one.
constexpr std::size_t kMostAhead = 10'000;

// What is told of somebody who is kept back.
const smtp::Outcome kNotBegun{smtp::State::kFailed, smtp::ResultCode::kCancelled, {}, {}, false};

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
  if (turns_ != nullptr && turns_->HasPace()) {
    auto kept = NextKeptBack(recipient, position, turn);
    if (!kept || *kept || (!kept_back_.empty() && EverybodyWaits())) return kept;
  }
  while (kept_back_.size() < kMostKeptBack && order_.size() < kMostAhead) {
    auto next = NextOfList(recipient, position);
    if (!next || !*next) return next;
    order_.Take(position, recipient.email());
    if (turns_ == nullptr || !turns_->HasPace()) return true;
    const auto address = smtp::EnvelopeAddress(recipient.email());
    if (!address) return true;
    turn.domain = DomainOf(address->domain());
    if (MayGo(turn)) return true;
    kept_back_.push_back({position, turn.domain});
    run_.Settled(position, kNotBegun);  // a loss of power leaves no doubt about it
    if (EverybodyWaits()) return false;
  }
  return false;
}

Result<bool> InTurn::NextKeptBack(recipients::Recipient& recipient, std::int64_t& position, Turn& turn) {
  for (auto each = kept_back_.begin(); each != kept_back_.end(); ++each) {
    turn = {each->domain};
    const Wait known = turns_->Due(turn.domain);
    if (known.why) {
      WaitFor(known);
    } else if (MayGo(turn)) {
      position = each->position;
      kept_back_.erase(each);
      const auto again = run_.Again(position, recipient);
      return again ? Result<bool>(true) : again.error();
    }
    if (EverybodyWaits()) break;
  }
  return false;
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
