// The file of the run journal: where it is, its tables, and how it is opened.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/boot_id.h"
#include "platform/clock.h"
#include "platform/sqlite.h"
#include "run/journal/disk.h"
#include "run/journal/run_journal.h"

namespace quillcast::run {

// What a journal works with. The ports outlive the journal and its runs.
struct JournalPlace {
  std::filesystem::path file;  // runs.db, made where it is missing
  std::string boot = platform::BootId();
  const platform::Clock* clock = nullptr;
  Disk* disk = nullptr;                                                       // the system's where there is none
  platform::LockPatience patience = {.lock_wait = std::chrono::seconds(30)};  // a cancel ends what is no sending
  // A commit is not made so soon after another one: what is told then goes into the run's recent log.
  std::chrono::milliseconds between_commits = std::chrono::milliseconds(10);
  int long_log = 8192;  // pages that the log grows by until it is taken into the file: 32 MiB

  Disk& TheDisk() const;
  std::filesystem::path Locks() const;  // beside it
  std::filesystem::path Log() const;    // the write-ahead log, which SQLite keeps beside it
};

// Fails as RunJournal does.
Result<platform::Database> OpenJournalFile(const JournalPlace& place);

// Takes what is in the write-ahead log into the file, durably, so that the log begins anew; `cut` leaves nothing of it
// behind either. Whoever writes waits for the end of it, and kTryAgain where somebody reads what is in the log for
// longer than this patience.
Result<void> TakeLogIntoFile(const JournalPlace& place, std::chrono::milliseconds patience, bool cut);

// Rows of blocks, of words: what belongs to a mailing stands together.
inline constexpr int kBlockBits = 24;
inline constexpr int kWordsBits = 32;
inline std::int64_t BlockKey(MailingId mailing, std::int64_t block) { return (mailing << kBlockBits) | block; }
inline std::int64_t WordsKey(MailingId mailing, std::int64_t number) { return (mailing << kWordsBits) | number; }

// Which file lies at the journal's place, whatever becomes of it later; looks at its name alone, for whoever opens and
// closes it drops the locks that SQLite has on it.
struct FileAtPlace {
  dev_t device = 0;
  ino_t inode = 0;

  static FileAtPlace Of(const JournalPlace& place);  // zeros for none
  bool operator==(const FileAtPlace&) const = default;
};

// What the file has of one mailing cannot be.
Error DamagedMailingIn(const std::filesystem::path& file);
// An error of the file, with what can be done where it is a journal.
Error OfJournal(Error error);
template <typename T>
Result<T> OfJournal(Result<T> result) {
  return result ? std::move(result) : Result<T>(OfJournal(result.error()));
}

}  // namespace quillcast::run
