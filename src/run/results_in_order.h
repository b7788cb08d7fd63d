// What became of each recipient, told in the order of the list, in whatever order it is known: who is kept back holds
// up the telling of those behind, and not their letters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "run/journal/run_journal.h"
#include "smtp/outcome.h"

namespace quillcast::run {

struct RecipientInOrder {
  std::int64_t position = 0;
  std::string address;  // as stored
  enum class Stage : std::uint8_t { kWaits, kSettled, kFailedHere, kLeft } stage = Stage::kWaits;
  smtp::Outcome outcome;  // of one that is settled, or failed before any server was asked
  int tries = 1;          // of this run, this one included
  Before before = {};     // this run
  bool subject_not_encoded = false;
  std::string log;  // lines of the connection, each with "\n"
};

// Whether a message of before may have come to this recipient, and what came of this one tells nothing of that, as it
// was not taken. They stay unknown, and are sent nothing more unless whoever sends asks for it.
bool StaysInDoubt(const RecipientInOrder& recipient, const smtp::Outcome& outcome);
smtp::Outcome AsInDoubt(smtp::Outcome outcome);

class ResultsInOrder {
 public:
  using Stage = RecipientInOrder::Stage;

  // The next of the list.
  void Take(std::int64_t position, std::string_view address, const Before& before);
  // Somebody whose last result was told, for one try more: its result is told as soon as it is known.
  void TakeAgain(std::int64_t position, std::string_view address, int tries, int before);
  // How many wait for the first of them, itself included; but for those who are tried again.
  std::size_t size() const { return recipients_.size(); }
  // It is the first, or tried again, so that nothing has to be kept for it.
  bool IsNext(std::int64_t position) const {
    return again_.contains(position) || (!recipients_.empty() && First().position == position);
  }

  // For those who were taken.
  RecipientInOrder& At(std::int64_t position);
  // One that was tried again and waits no more.
  std::optional<RecipientInOrder> TakeTriedAgain();
  // Whoever waits is not come to any more.
  void LeaveTheWaiting();

  // Whether there is a first one that waits no more.
  bool IsReady() const { return !recipients_.empty() && First().stage != Stage::kWaits; }
  const RecipientInOrder& First() const { return recipients_.front(); }
  void Pop() { recipients_.pop_front(); }

 private:
  std::deque<RecipientInOrder> recipients_;
  std::map<std::int64_t, RecipientInOrder> again_;  // ahead of all of those in the list: those with the carrier
};

}  // namespace quillcast::run
