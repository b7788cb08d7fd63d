// What became of every recipient of every run, kept while it happens: so that a run whose program was killed, or whose
// computer lost its power, can go on, and nobody is sent twice or left out.
//
// A mailing is one message to one list, frozen as they were when it began. A run is one go at it: the first, or one
// that goes on with those who are left. What is known of a recipient belongs to the mailing; a run says who was in it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "recipients/recipient.h"
#include "recipients/row_source.h"
#include "run/journal/recipient_choice.h"
#include "run/journal/recipient_states.h"
#include "smtp/outcome.h"

namespace quillcast::run {

// After a loss of power, or of what a run told last, so many recipients, and who was in flight beside them, may be in
// doubt that nothing else is known of: they are unknown then.
inline constexpr std::int64_t kDoubtful = 256;

using MailingId = std::int64_t;
using RunId = std::int64_t;  // greater than those of all runs that began before

enum class RunKind : std::uint8_t { kFirst, kResume, kRetry };

// How a run stands.
enum class RunStanding : std::uint8_t {
  kGoesOn,  // some program has it in hand
  kEnded,   // it came to its own end: completed, cancelled or stopped
  kCutOff,  // whoever had it in hand is gone
};

struct RunEntry {
  RunId id = 0;
  MailingId mailing = 0;
  RunKind kind = RunKind::kFirst;
  RunStanding standing = RunStanding::kEnded;
  std::string history;  // the base name of its files there
  std::chrono::sys_seconds began;
  std::optional<std::chrono::sys_seconds> ended;
  std::int64_t recipients = 0;  // whom it was for
  std::string pace;             // as NewRun had it

  bool operator==(const RunEntry&) const = default;
};

struct MailingEntry {
  MailingId id = 0;
  std::string subject;
  std::string group;
  std::int64_t recipients = 0;
  StateCounts counts;            // who of them is where, now
  std::int64_t tried_again = 0;  // who of the deferred, failed and refused were to be, when their run ended
  std::vector<RunEntry> runs;    // in the order in which they began

  bool operator==(const MailingEntry&) const = default;
};

// One that cannot be read: it can be forgotten, and that alone.
struct DamagedMailing {
  MailingId id = 0;
  RunId run = 0;             // its first; 0 where that is lost
  std::string subject = {};  // what of it can still be read; empty where nothing can
  std::string group = {};

  bool operator==(const DamagedMailing&) const = default;
};

// Newest first: those that can be read, and those that cannot.
struct JournalList {
  std::vector<MailingEntry> mailings;
  std::vector<DamagedMailing> damaged;

  bool operator==(const JournalList&) const = default;
};

// A recipient as the journal knows it.
struct JournalRow {
  std::int64_t position = 0;  // 1-based place in the list
  ResultState state = ResultState::kNotTried;
  std::int32_t code = 0;                         // smtp::ResultCode of the last attempt
  smtp::ServerReply reply;                       // of the last attempt
  std::string reason;                            // in our words
  std::optional<std::chrono::sys_seconds> when;  // of the last change
  int attempts = 0;
  bool again = false;  // it was to be tried again, when its run ended
  RunId run = 0;       // that tried last; 0 for none
  recipients::Recipient recipient;
};

// What was of a recipient when a run began that it is for.
struct Before {
  ResultState state = ResultState::kNotTried;
  int tries = 0;  // of a run that ended while it waited for one more, which goes on here
};

// A run under way. It belongs to one thread, and holds its mailing: no other program takes it up meanwhile.
class JournalledRun {
 public:
  virtual ~JournalledRun() = default;
  virtual RunId id() const = 0;
  // Whom it is for, in the order of the list and with their places in it: those of its choice when it began.
  virtual std::int64_t size() const = 0;
  // How many are in the list itself, be they for this run or not.
  virtual std::int64_t list_size() const = 0;
  // False behind the last, and not to be called again then.
  virtual Result<bool> Next(recipients::Recipient& recipient, std::int64_t& position) = 0;
  // Of the one whom Next gave last.
  virtual Before before() const = 0;

  // The recipient at this place once more. Only for somebody whom Next gave.
  virtual Result<void> Again(std::int64_t position, recipients::Recipient& recipient) = 0;

  // From the next Record on this recipient's message may be out. Only for somebody whom Next gave.
  virtual void GoesOut(std::int64_t position) = 0;
  // What became of it. Where that is not decided it was left, came back or was kept back: it counts as not tried.
  virtual void Settled(std::int64_t position, const smtp::Outcome& outcome) = 0;
  // Somebody who is settled is to be tried again, after so many tries: known from the next Record on, should the run
  // end before that. After 0: no more.
  virtual void IsTriedAgain(std::int64_t position, int tries) = 0;
  // Keeps all that was told since the last time, as one: what returned well outlives a kill of this process, and, but
  // for the last kDoubtful recipients, a loss of power. Waits for the disk where that takes longer than sending. After
  // a failure nothing is to be sent any more; what was told is not lost, and the next Record or End tries it again.
  virtual Result<void> Record() = 0;
  // Nothing will be told for a while: lets whoever looks into the journal meanwhile see what was. What is recorded is
  // kept all the same.
  virtual void Show() = 0;
  // At the run's own end: who is in flight still is unknown, and somebody else may take the mailing up. Fails as Record
  // does, and may be tried again.
  virtual Result<void> End() = 0;
};

// A mailing's message and settings: text of whoever keeps it, and files by their contents.
struct KeptFile {
  std::string name;     // by which it is asked for
  std::string content;  // its SHA-256 in hexadecimal digits, as Keep gave it
};

struct NewMailing {
  std::string subject;
  std::string group;
  std::string inputs;  // what it is made of, with no secret in it
  std::vector<KeptFile> files;
};

// A run that is to begin.
struct NewRun {
  std::string history;    // the base name of its files there
  std::string pace = {};  // how fast it goes: text of whoever keeps it
};

// The store of all of them. Errors: kTryAgain when another program holds the mailing (or the file, too long), kNoInput
// for what is not there, kBadData where the file is damaged or of another program, kNotPermitted where it may not be
// written, kUnavailable of a newer version of this program, kIo and kCannotCreate of the disk.
class RunJournal {
 public:
  virtual ~RunJournal() = default;

  // Keeps the bytes behind an open file once for each content, without holding them.
  virtual Result<KeptFile> Keep(std::string name, int fd) = 0;
  // Freezes a mailing, its rows as they come to their end (those of `range`, with their places), and begins its first
  // run. Nothing of it stays after a failure or a cancel.
  virtual Result<std::unique_ptr<JournalledRun>> Begin(const NewMailing& mailing, recipients::RowSource& rows,
                                                       const std::optional<recipients::PartialRange>& range,
                                                       NewRun run) = 0;
  // Begins a run that goes on with those of the mailing's recipients. Those whom a lost program left in flight are
  // unknown from now on. kNoInput where nobody is chosen.
  virtual Result<std::unique_ptr<JournalledRun>> GoOn(MailingId mailing, RunKind kind, const RecipientChoice& choice,
                                                      NewRun run) = 0;

  virtual Result<JournalList> List() = 0;
  // The mailing of a run.
  virtual Result<MailingEntry> Find(RunId run) = 0;
  // Its number, also where it is damaged.
  virtual Result<MailingId> MailingOf(RunId run) = 0;
  virtual Result<NewMailing> Inputs(MailingId mailing) = 0;
  // A kept file, readable from its beginning; it takes no place in any folder.
  virtual Result<platform::UniqueFd> Open(const KeptFile& file) = 0;

  // How many of the mailing's recipients they are.
  virtual Result<std::int64_t> Count(MailingId mailing, const RecipientChoice& choice) = 0;
  // Calls `visit` with them in the order of the list, from the `skip`th on, until it gives
  // false. It asks nothing of this journal meanwhile.
  virtual Result<void> Visit(MailingId mailing, const RecipientChoice& choice, std::int64_t skip,
                             const std::function<Result<bool>(const JournalRow&)>& visit) = 0;

  // Nothing of it is left in the file, its recipients included. kTryAgain while a run of it goes on.
  virtual Result<void> Forget(MailingId mailing) = 0;
};

}  // namespace quillcast::run
