// A run under way in the file of the journal.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "run/journal/frozen_rows.h"
#include "run/journal/journal_file.h"
#include "run/journal/log_sync.h"
#include "run/journal/mailing_lock.h"
#include "run/journal/recent_log.h"
#include "run/journal/run_journal.h"
#include "run/journal/scope_walk.h"
#include "run/journal/state_blocks.h"
#include "run/journal/words_table.h"

namespace quillcast::run {

// A run as it begins.
struct BegunRun {
  RunId id = 0;
  MailingId mailing = 0;
  std::uint16_t number = 1;     // within the mailing
  std::int64_t first = 1;       // the place of the mailing's first recipient in its list
  std::int64_t recipients = 0;  // of the mailing
  std::int64_t list = 0;        // in the list that they were taken from; of a later run at least so many
  std::int64_t scope = 0;       // of the run
  RecipientChoice choice;       // of the mailing's recipients
  bool goes_on = false;         // with the tries of those who waited for one more
};

// Against a loss of power: a message goes out only where its recipient was reserved before and that is known to be on
// the disk, and who is settled is reserved no longer, which is on the disk soon. Recipients are reserved in batches, in
// the order of the list, well before their turn, so that a batch becomes durable while those before it are sent:
// kDoubtful in all, in flight or not, and a smallest batch more where as many are in flight. Then, and where recipients
// go out in another order, whoever is not reserved has to wait for the disk.
class SqliteJournalledRun final : public JournalledRun {
 public:
  // Ends the transaction that begins the run.
  static Result<std::unique_ptr<JournalledRun>> Start(const JournalPlace& place,
                                                      std::unique_ptr<platform::Database> database,
                                                      platform::Transaction transaction, MailingLock lock,
                                                      const BegunRun& run);

  RunId id() const override { return run_.id; }
  std::int64_t size() const override { return run_.scope; }
  std::int64_t list_size() const override { return run_.list; }
  Result<bool> Next(recipients::Recipient& recipient, std::int64_t& position) override;
  Before before() const override { return before_; }
  Result<void> Again(std::int64_t position, recipients::Recipient& recipient) override;
  void GoesOut(std::int64_t position) override;
  void Settled(std::int64_t position, const smtp::Outcome& outcome) override;
  void IsTriedAgain(std::int64_t position, int tries) override;
  Result<void> Record() override;
  void Show() override;
  Result<void> End() override;

 private:
  static constexpr std::int64_t kSmallestBatch = kDoubtful / 4;
  struct Batch {
    std::int64_t last = 0;    // index of its last recipient
    std::int64_t commit = 0;  // that reserves it
  };
  struct Parts {
    std::unique_ptr<platform::Database> database;
    StateBlocks blocks;
    WordsWriter words;
    platform::Statement read_rows;
    platform::Statement write_round;
    ScopeWalk walk;
    ScopeWalk reserving;
  };
  SqliteJournalledRun(JournalPlace place, Parts parts, MailingLock lock, BegunRun run);

  Result<void> OpenBlock(std::int64_t block);
  Result<void> ReadRow(std::int64_t index, recipients::Recipient& recipient);
  Result<void> TryGoesOut(std::int64_t index);
  Result<void> TrySettled(std::int64_t index, const smtp::Outcome& outcome);
  Result<void> TryTriedAgain(std::int64_t index, int tries);
  StateRecord Verdict(const StateRecord& before, const smtp::Outcome& outcome);
  Result<void> Change(std::int64_t index, const StateRecord& record);
  Result<void> BeginRecentLog();
  // Keeps the first failure.
  void Note(const Result<void>& done);
  // The commit that has to be durable before the message of somebody who is reserved goes out.
  std::int64_t CommitThatReserves(std::int64_t index) const;
  Result<void> ReserveBatch();
  // All that changed, in a transaction that is open, and what becomes of it after its commit.
  Result<void> Write();
  void Written();
  Result<void> Commit();
  Result<void> Keep();
  Result<void> SettleTheRest();
  std::uint32_t Now() const;

  JournalPlace place_;
  FileAtPlace file_;
  BegunRun run_;
  std::optional<MailingLock> lock_;
  std::unique_ptr<platform::Database> database_;
  StateBlocks blocks_;
  WordsWriter words_;

  platform::Statement read_rows_;
  ScopeWalk walk_;
  Before before_;
  std::int64_t rows_block_ = -1;  // whose rows these are
  std::string rows_octets_;
  FrozenRows rows_{{}};
  std::int64_t next_row_ = 0;  // index of what rows_ gives next

  std::unordered_map<std::int64_t, StateRecord> in_flight_;  // what they were before
  ScopeWalk reserving_;
  std::deque<Batch> batches_;
  std::int64_t open_ = 0;           // recipients who are reserved
  std::int64_t settled_ = 0;        // since a commit was last to become durable
  std::int64_t commits_ = 0;        // that are done
  std::int64_t to_be_durable_ = 0;  // the last commit that has to become so
  std::int64_t awaited_ = 0;        // the commit that has to be so before anything is sent
  platform::Instant committed_;     // when, the last time
  int log_pages_ = 0;
  int long_log_ = 0;  // as many are too many
  std::unique_ptr<LogSync> sync_;
  std::unique_ptr<RecentLog> recent_;
  platform::Statement write_round_;
  std::optional<Error> failed_;
};

}  // namespace quillcast::run
