// The rows of mailings and of their runs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/sqlite.h"
#include "run/journal/journal_file.h"
#include "run/journal/run_journal.h"
#include "run/journal/state_blocks.h"

namespace quillcast::run {

struct StoredRun {
  RunEntry entry;
  std::string boot;        // in which it began
  std::int64_t round = 0;  // of its recent log, as of its last commit
};

struct MailingCounts {
  StateCounts states;
  std::int64_t tried_again = 0;
};

struct StoredMailing {
  MailingEntry entry;  // but for its counts
  std::int64_t first = 1;
  std::optional<MailingCounts> counts;  // as the last run left them, where it came to its end
  std::vector<StoredRun> runs;          // by their numbers; entry.runs is empty
};

Error NoSuchMailing();
// kNoInput for one that is not there.
Result<StoredMailing> ReadMailing(platform::Database& database, MailingId mailing);
Result<MailingId> MailingOf(platform::Database& database, RunId run);
// Newest first.
Result<std::vector<MailingId>> AllMailings(platform::Database& database);

Result<MailingId> AddMailing(platform::Database& database, const NewMailing& mailing);
Result<void> SetRecipients(platform::Database& database, MailingId mailing, std::int64_t first,
                           std::int64_t recipients);
Result<RunId> AddRun(platform::Database& database, const StoredRun& run, std::int64_t number);
// With the counts that the mailing has then.
Result<void> EndRun(platform::Database& database, RunId run, std::int64_t when, const MailingCounts& counts);

// All but its files.
Result<void> ForgetMailing(platform::Database& database, MailingId mailing);

// Of whom nobody knows whether the message is out, when the program that sent them is gone.
enum class Doubt {
  kNobody,       // there was none, or it goes on
  kByKill,       // those in flight, and who is reserved still: what was told last is gone (run/journal/recent_log)
  kByPowerLoss,  // those in flight and reserved: what the disk had not is gone
};
// What is in doubt of a mailing whose last run this is.
Doubt DoubtOf(const StoredRun& last, bool in_hand, const std::string& boot);
// As whom a recipient counts then.
ResultState StateIn(Doubt doubt, const char* record);
Result<MailingCounts> CountStates(StateBlocks& blocks, Doubt doubt);
// Why one of this state is in doubt, as a whole sentence.
const char* ReasonOf(Doubt doubt, ResultState state);

}  // namespace quillcast::run
