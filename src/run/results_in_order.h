// What became of each recipient, told in the order of the list, in whatever order it is known: who is kept back holds
// up the telling of those behind, and not their letters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "smtp/outcome.h"

namespace quillcast::run {

struct RecipientInOrder {
  std::int64_t position = 0;
  std::string address;  // as stored
  enum class Stage : std::uint8_t { kWaits, kSettled, kFailedHere, kLeft } stage = Stage::kWaits;
  smtp::Outcome outcome;  // of one that is settled, or failed before any server was asked
  bool subject_not_encoded = false;
  std::string log;  // lines of the connection, each with "\n"
};

class ResultsInOrder {
 public:
  using Stage = RecipientInOrder::Stage;

  // The next of the list.
  void Take(std::int64_t position, std::string_view address);
  // How many wait for the first of them, itself included.
  std::size_t size() const { return recipients_.size(); }
  // It is the first, so that nothing has to be kept for it.
  bool IsFirst(std::int64_t position) const { return !recipients_.empty() && First().position == position; }

  // For those who were taken.
  RecipientInOrder& At(std::int64_t position);
  // Whoever waits is not come to any more.
  void LeaveTheWaiting();

  // Whether there is a first one that waits no more.
  bool IsReady() const { return !recipients_.empty() && First().stage != Stage::kWaits; }
  const RecipientInOrder& First() const { return recipients_.front(); }
  void Pop() { recipients_.pop_front(); }

 private:
  std::deque<RecipientInOrder> recipients_;
};

}  // namespace quillcast::run
