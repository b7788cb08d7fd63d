// What a run told, on its way into the file: at once, into its recent log, or together at its next commit.
#include "run/journal/journalled_run.h"
#include "run/journal/mailing_tables.h"

namespace quillcast::run {

Result<void> SqliteJournalledRun::Write() {
  if (auto written = blocks_.Write(); !written) return written;
  if (auto written = words_.Write(); !written) return written;
  write_round_.Reset();
  if (auto bound = write_round_.Bind(1, recent_->next_round()); !bound) return bound;
  if (auto bound = write_round_.Bind(2, run_.id); !bound) return bound;
  return write_round_.Run();
}

void SqliteJournalledRun::Written() {
  blocks_.Written();
  words_.Written();
  ++commits_;
  if (to_be_durable_ == commits_) {
    settled_ = 0;
    sync_->Ask(commits_);
  }
  committed_ = place_.clock->Monotonic();
  recent_->BeginAnew();
  if (log_pages_ < place_.long_log) long_log_ = place_.long_log;  // it was begun anew
  if (log_pages_ >= long_log_) {
    long_log_ = log_pages_ + place_.long_log;
    sync_->Shorten();
  }
}

Result<void> SqliteJournalledRun::Commit() {
  auto transaction = platform::Transaction::Begin(*database_);
  if (!transaction) return transaction.error();
  if (auto written = Write(); !written) return written;
  if (auto committed = transaction->Commit(); !committed) return committed;
  Written();
  return {};
}

// A kill loses neither what is in the recent log nor what is committed. Where the one cannot be written, the other may.
Result<void> SqliteJournalledRun::Keep() {
  if (!blocks_.IsChanged()) return {};
  const auto told = recent_->Append();
  const bool is_due = to_be_durable_ > commits_ || place_.clock->Monotonic() - committed_ >= place_.between_commits;
  return told && !is_due ? Result<void>() : Commit();
}

void SqliteJournalledRun::Show() {
  if (failed_ || !blocks_.IsChanged()) return;
  IgnoreErrors(recent_->Append());
  IgnoreErrors(Commit());  // the next Record or End tries it again
}

Result<void> SqliteJournalledRun::Record() {
  if (open_ + kSmallestBatch <= kDoubtful) Note(ReserveBatch());
  if (settled_ >= kSmallestBatch) to_be_durable_ = commits_ + 1;
  if (failed_) return *failed_;
  if (auto kept = Keep(); !kept) return kept;
  return awaited_ > 0 ? sync_->Wait(std::exchange(awaited_, 0)) : Result<void>();
}

Result<void> SqliteJournalledRun::SettleTheRest() {
  while (!in_flight_.empty()) {
    const std::int64_t index = in_flight_.begin()->first;
    const smtp::Outcome unknown{
        smtp::State::kUnknown, smtp::ResultCode::kException, {}, "The run ended before the server's answer came."};
    if (auto settled = TrySettled(index, unknown); !settled) return settled;
  }
  return {};
}

Result<void> SqliteJournalledRun::End() {
  Note(SettleTheRest());
  if (failed_) return *failed_;
  auto transaction = platform::Transaction::Begin(*database_);
  if (!transaction) return transaction.error();
  if (auto written = Write(); !written) return written;
  const auto counts = CountStates(blocks_, Doubt::kNobody);
  if (!counts) return counts.error();
  if (auto ended = EndRun(*database_, run_.id, Now(), *counts); !ended) return ended;
  if (auto committed = transaction->Commit(); !committed) return committed;
  to_be_durable_ = commits_ + 1;
  Written();
  recent_->Remove();
  const bool is_there = FileAtPlace::Of(place_) == file_;
  if (is_there) sync_->Shorten();  // which would make a new one
  lock_.reset();
  if (!is_there) {
    return Error{
        Failure::kIo,
        Say("{} was removed or replaced while the run went on, so the run is not in it.", place_.file.string()),
        "Its report in the history says what became of each recipient."};
  }
  return sync_->Wait(commits_);
}

}  // namespace quillcast::run
