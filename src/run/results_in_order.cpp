#include "run/results_in_order.h"

#include <fmt/format.h>

#include <algorithm>

namespace quillcast::run {

bool StaysInDoubt(const RecipientInOrder& recipient, const smtp::Outcome& outcome) {
  return recipient.before.state == ResultState::kUnknown && outcome.is_decided() && outcome.state != smtp::State::kSent;
}

smtp::Outcome AsInDoubt(smtp::Outcome outcome) {
  constexpr const char* kBefore = "It was not taken this time; what went out before may have been.";
  outcome.state = smtp::State::kUnknown;
  if (outcome.reply.code != 0) outcome.reason = fmt::format("The server answered {}.", outcome.reply.code);
  outcome.reply = {};
  smtp::AddSentence(outcome.reason, kBefore);
  return outcome;
}

void ResultsInOrder::Take(std::int64_t position, std::string_view address, const Before& before) {
  RecipientInOrder& taken = recipients_.emplace_back();
  taken.position = position;
  taken.address = address;
  taken.before = before;
}

void ResultsInOrder::TakeAgain(std::int64_t position, std::string_view address, int tries, int before) {
  RecipientInOrder& taken = again_[position];
  taken.position = position;
  taken.address = address;
  taken.tries = tries;
  taken.before.tries = before;
}

RecipientInOrder& ResultsInOrder::At(std::int64_t position) {
  if (const auto again = again_.find(position); again != again_.end()) return again->second;
  return *std::ranges::lower_bound(recipients_, position, {}, &RecipientInOrder::position);
}

std::optional<RecipientInOrder> ResultsInOrder::TakeTriedAgain() {
  const auto ready = std::ranges::find_if(again_, [](const auto& each) { return each.second.stage != Stage::kWaits; });
  if (ready == again_.end()) return {};
  return std::move(again_.extract(ready).mapped());
}

void ResultsInOrder::LeaveTheWaiting() {
  for (RecipientInOrder& each : recipients_) {
    if (each.stage == Stage::kWaits) each.stage = Stage::kLeft;
  }
}

}  // namespace quillcast::run
