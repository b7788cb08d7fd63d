#include "run/results_in_order.h"

#include <algorithm>

namespace quillcast::run {

void ResultsInOrder::Take(std::int64_t position, std::string_view address) {
  RecipientInOrder& taken = recipients_.emplace_back();
  taken.position = position;
  taken.address = address;
}

RecipientInOrder& ResultsInOrder::At(std::int64_t position) {
  return *std::ranges::lower_bound(recipients_, position, {}, &RecipientInOrder::position);
}

void ResultsInOrder::LeaveTheWaiting() {
  for (RecipientInOrder& each : recipients_) {
    if (each.stage == Stage::kWaits) each.stage = Stage::kLeft;
  }
}

}  // namespace quillcast::run
