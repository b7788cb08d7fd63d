// Whom a run comes to next: those of the list in their order, but for those whose domain has had enough for now. They
// are kept back, and come as soon as they may. Where nobody of the list may go, those come who are tried again and due.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "platform/result.h"
#include "recipients/recipient.h"
#include "run/journal/run_journal.h"
#include "run/pace/turns.h"
#include "run/results_in_order.h"
#include "run/retries.h"
#include "smtp/client/job_source.h"

namespace quillcast::run {

class InTurn {
 public:
  // `turns` is null where nothing waits for a turn, because nothing is sent. Each row that is read is taken into
  // `order`; whom `retries` gives, again.
  InTurn(JournalledRun& run, Turns* turns, ResultsInOrder& order, Retries& retries)
      : run_(run), turns_(turns), order_(order), retries_(retries) {}

  // The next recipient, whose turn is taken where there is a pace and it has an address. False where there is none now:
  // then TakeWait says until when.
  Result<bool> Next(recipients::Recipient& recipient, std::int64_t& position, Turn& turn);
  // Takes a turn for somebody whom Next gave and who went back.
  smtp::Passage TakesTurn(Turn& turn);
  // The soonest of what Next, and TakesTurn behind the last who went, had to wait for. Nothing where there is none any
  // more, or where only an outcome can tell.
  std::optional<Wait> TakeWait();

  // The next of the list who was not come to, whosever turn it is; false at its end.
  Result<bool> NextOfList(recipients::Recipient& recipient, std::int64_t& position);

 private:
  using KeptBack = Retry;  // without a try: of the list

  bool HasPace() const { return turns_ != nullptr && turns_->HasPace(); }
  Result<bool> NextOfAll(recipients::Recipient& recipient, std::int64_t& position, Turn& turn);
  Result<bool> NextRetry(recipients::Recipient& recipient, std::int64_t& position, Turn& turn);
  Result<bool> Again(const Retry& whom, recipients::Recipient& recipient, std::int64_t& position, Turn& turn);
  Result<bool> NextKeptBack(recipients::Recipient& recipient, std::int64_t& position, Turn& turn);
  bool MayGo(Turn& turn);
  bool IsDue(Turn& turn);
  bool EverybodyWaits();
  void WaitFor(const Wait& wait);

  JournalledRun& run_;
  Turns* turns_;
  ResultsInOrder& order_;
  Retries& retries_;
  std::deque<KeptBack> kept_back_;  // in the order in which they came
  std::optional<Wait> wait_;
  std::optional<Wait> wait_of_those_back_;
  bool at_end_ = false;  // of the list
};

}  // namespace quillcast::run
