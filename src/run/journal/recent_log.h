// What a run told since its last commit, in a file of its own beside the journal's: a few octets where a commit writes
// pages, so that a commit can be for many recipients where they go out fast. Whoever finds the run's program gone takes
// them into the journal. Nothing of it is synced: it outlives a kill, and after another start of the computer it is not
// asked.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/file.h"
#include "platform/sqlite.h"
#include "run/journal/journal_file.h"
#include "run/journal/mailing_tables.h"
#include "run/journal/result_words.h"
#include "run/journal/state_record.h"

namespace quillcast::run {

class RecentLog {
 public:
  // Of this run, in the place of what an earlier one left. Whoever begins it has the mailing's lock.
  static Result<std::unique_ptr<RecentLog>> Begin(const JournalPlace& place, const StoredRun& run);

  // What the next Append writes: a recipient's record, and words, in the order of their numbers, before the records
  // that have them.
  void Changed(std::int64_t index, const StateRecord& record);
  void Said(std::uint32_t number, const ResultWords& words);
  // As one: all of it is there after a kill, or nothing. What could not be written is so the next time.
  Result<void> Append();
  // What is told behind the next commit is of this round, which the commit writes into the journal: by that an earlier
  // state of the file is known for what it is.
  std::int64_t next_round() const { return std::int64_t{round_} + 1; }
  // All of it is committed.
  void BeginAnew();
  // The run has ended.
  void Remove();

 private:
  RecentLog(platform::UniqueFd fd, std::filesystem::path path, std::size_t begin)
      : fd_(std::move(fd)), path_(std::move(path)), begin_(begin), end_(begin) {}

  platform::UniqueFd fd_;
  std::filesystem::path path_;
  std::size_t begin_;  // of what is told, behind what says whose it is
  std::size_t end_;
  std::uint32_t round_ = 1;  // one more with each commit
  std::string frame_;        // what Append writes
};

// Takes into the journal, in the transaction that is open, what the mailing's last run told last, where its program is
// gone. The caller sees to it that nobody begins another one meanwhile. Where the file is missing, damaged or an
// earlier state of itself, whoever was reserved stays in doubt.
Result<void> TakeRecentIn(platform::Database& database, const JournalPlace& place, const StoredMailing& mailing);
// The same for every mailing that has something, and that nobody has in hand. Where that fails the file stays for the
// next time, and no other mailing suffers. Gives those for which the disk has no room. kTryAgain where others write for
// too long.
Result<std::vector<MailingId>> TakeAllRecentIn(platform::Database& database, const JournalPlace& place);
// Of a mailing that is forgotten.
void RemoveRecentOf(const JournalPlace& place, MailingId mailing);

}  // namespace quillcast::run
