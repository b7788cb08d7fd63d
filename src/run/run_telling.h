// What a run tells of its recipients, in the order of the list: to its report, to whoever follows it, and in its
// summary.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "run/results_in_order.h"
#include "run/retries.h"
#include "run/run_report.h"
#include "run/sending_run.h"

namespace quillcast::run {

// Somebody whom the run did not come to any more, though the row was taken.
struct LeftRecipient {
  std::int64_t position = 0;
  std::string address;
  ResultState stays = ResultState::kNotTried;
};

class RunTelling {
 public:
  // All of it must outlive this. `retries` is null where nobody is tried again.
  RunTelling(RunReport report, RunListener& listener, RunSummary& summary, ResultsInOrder& order, Retries* retries)
      : report_(std::move(report)), listener_(listener), summary_(summary), order_(order), retries_(retries) {}
  // Who fails before any server was asked is settled there.
  void Began(JournalledRun& run) { run_ = &run; }
  RunReport& report() { return report_; }

  void Progress(std::int64_t total, std::uint64_t sent, std::uint64_t size);
  // No message is under way that would bring it up to date.
  void CatchUpProgress(std::int64_t total);

  // A line of the connection. It belongs to the first of those with the carrier, where there is one.
  void LogLine(std::string_view line, std::optional<std::int64_t> position);
  // The result of that one comes right behind its lines.
  void EndLines() { lines_told_ = false; }

  // Those of the order whose turn it is to be told. True where one of them failed here, so that no server's reply has
  // it recorded.
  bool TellThoseReady();
  // What is told once the run has ended: those of the order who were left; then whoever was not come to at all.
  void TellThoseLeft();
  void NotTried(const LeftRecipient& left);

  // What cannot be written ends the run.
  void Flush();

 private:
  std::int64_t Done() const { return summary_.sent + summary_.failed; }
  void Tell(const RecipientInOrder& recipient);
  void Settle(const RecipientInOrder& recipient);
  bool DeferRetry(const RecipientInOrder& recipient);

  RunReport report_;
  RunListener& listener_;
  RunSummary& summary_;
  ResultsInOrder& order_;
  Retries* retries_;
  JournalledRun* run_ = nullptr;
  std::int64_t progress_told_ = 0;
  bool lines_told_ = false;  // in the report: of the first with the carrier, whose result comes right behind them
  std::vector<LeftRecipient> left_;
};

}  // namespace quillcast::run
