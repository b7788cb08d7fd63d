// One run from its first recipient to its last: the source of the jobs that a carrier takes. Its beginning and its end
// stand in sending_run.cpp, who is next in letter_run_next.cpp, and what becomes of those under way in
// letter_run_outcomes.cpp.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recipients/row_source.h"
#include "run/in_turn.h"
#include "run/partial_range.h"
#include "run/results_in_order.h"
#include "run/run_telling.h"
#include "run/sending_run.h"
#include "run/slow_down.h"
#include "run/those_lost.h"

namespace quillcast::run {

// A recipient's message on its way. Once its outcome is known the message itself goes to another letter: thousands may
// wait to be told of behind one that a slow connection has.
struct Letter : smtp::Job {
  Turn turn;
  std::unique_ptr<message::RenderedMessage> rendered;
  bool is_out = false;
  std::int64_t lost_before = 0;  // when it went out last
};

// Takes the rows of the group one by one, from the store to the wire to the report.
class LetterRun final : public smtp::JobSource {
 public:
  LetterRun(const RunParts& parts, HistoryEntry entry, RunListener& listener)
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
  // So far: by the fault of the account, which the summary counts, and of the way.
  std::int64_t NotTheirDoing() const { return summary_.not_their_doing + lost_->left(); }
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

}  // namespace quillcast::run
