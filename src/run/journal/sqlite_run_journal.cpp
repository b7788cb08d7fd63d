#include "run/journal/sqlite_run_journal.h"

#include <unistd.h>

#include <cerrno>
#include <limits>
#include <utility>

#include "run/journal/kept_contents.h"
#include "run/journal/mailing_tables.h"
#include "run/journal/recent_log.h"

namespace quillcast::run {
namespace {

// Whoever begins a run: a connection of its own and a transaction on it.
struct Beginning {
  std::unique_ptr<platform::Database> database;
  platform::Transaction transaction;  // ends before it

  static Result<Beginning> On(const JournalPlace& place) {
    auto opened = OpenJournalFile(place);
    if (!opened) return opened.error();
    auto database = std::make_unique<platform::Database>(*std::move(opened));
    auto transaction = platform::Transaction::Begin(*database);
    if (!transaction) return transaction.error();
    return Beginning{std::move(database), *std::move(transaction)};
  }
};

// Writes the rows as they come, in blocks.
class Freezing {
 public:
  static Result<Freezing> Into(platform::Database& database, MailingId mailing) {
    auto rows = database.Prepare("INSERT INTO rows(id, rows) VALUES(?, ?)");
    if (!rows) return rows.error();
    auto states = database.Prepare("INSERT INTO states(id, records) VALUES(?, ?)");
    if (!states) return states.error();
    return Freezing(*std::move(rows), *std::move(states), mailing);
  }

  Result<void> Add(const recipients::Recipient& row) {
    AppendRow(row, rows_octets_);
    const auto at = records_.size();
    records_.resize(at + kRecordSize);
    WriteRecord({}, records_.data() + at);
    return ++recipients_ % kBlockSize == 0 ? Flush() : Result<void>();
  }

  Result<void> Flush() {
    if (records_.empty()) return {};
    const std::int64_t key = BlockKey(mailing_, (recipients_ - 1) / kBlockSize);
    if (auto done = Insert(rows_, key, rows_octets_); !done) return done;
    return Insert(states_, key, records_);
  }

  std::int64_t recipients() const { return recipients_; }

 private:
  Freezing(platform::Statement rows, platform::Statement states, MailingId mailing)
      : rows_(std::move(rows)), states_(std::move(states)), mailing_(mailing) {}

  static Result<void> Insert(platform::Statement& statement, std::int64_t key, std::string& octets) {
    statement.Reset();
    if (auto bound = statement.Bind(1, key); !bound) return bound;
    if (auto bound = statement.BindBytes(2, octets); !bound) return bound;
    if (auto done = statement.Run(); !done) return done;
    statement.Reset();
    octets.clear();
    return {};
  }

  platform::Statement rows_;
  platform::Statement states_;
  MailingId mailing_;
  std::int64_t recipients_ = 0;
  std::string rows_octets_;
  std::string records_;
};

std::chrono::sys_seconds Seconds(const JournalPlace& place) {
  return std::chrono::floor<std::chrono::seconds>(place.clock->Now());
}

StoredRun StoredAs(const JournalPlace& place, MailingId mailing, RunKind kind, NewRun begins) {
  StoredRun run;
  run.entry.mailing = mailing;
  run.entry.kind = kind;
  run.entry.history = std::move(begins.history);
  run.entry.pace = std::move(begins.pace);
  run.entry.began = Seconds(place);
  run.boot = place.boot;
  return run;
}

// Takes those in doubt for unknown and nobody for reserved any more, and counts whom the states have.
Result<std::int64_t> SettleDoubts(platform::Database& database, const StoredMailing& mailing, Doubt doubt,
                                  const RecipientChoice& choice) {
  auto blocks = StateBlocks::Of(database, database.path(), mailing.entry.id, mailing.entry.recipients);
  if (!blocks) return blocks.error();
  auto words = WordsWriter::After(database, database.path(), mailing.entry.id);
  if (!words) return words.error();
  auto filter = ChoiceFilter::Of(database, database.path(), mailing.entry.id, choice);
  if (!filter) return filter.error();
  std::int64_t in_scope = 0;
  std::vector<std::int64_t> touched;
  const auto look = [&](std::int64_t block, std::string_view octets) -> Result<bool> {
    for (std::size_t at = 0; at < octets.size(); at += kRecordSize) {
      const char* record = octets.data() + at;
      const auto takes = filter->Takes(StateIn(doubt, record), record);
      if (!takes) return takes.error();
      if (*takes) ++in_scope;
      if (!IsReservedAt(record) && StateAt(record) != ResultState::kInFlight) continue;
      touched.push_back(block * kBlockSize + static_cast<std::int64_t>(at / kRecordSize));
    }
    return true;
  };
  if (auto walked = blocks->Walk(0, look); !walked) return walked.error();
  for (const std::int64_t index : touched) {
    const auto octets = blocks->Look(index);
    if (!octets) return octets.error();
    StateRecord record = ReadRecord(*octets);
    const ResultState state = StateIn(doubt, *octets);
    if (state == ResultState::kUnknown && record.state != state) {
      const std::uint32_t why = words->Add({{"", "", ReasonOf(doubt, record.state)}});
      record = {state, false, record.attempts, record.run, record.when, 1, 0, why};
    }
    record.reserved = false;
    if (auto changed = blocks->Change(index, record); !changed) return changed.error();
  }
  if (auto written = blocks->Write(); !written) return written.error();
  if (auto written = words->Write(); !written) return written.error();
  return in_scope;
}

// Rows, and how many came.
class CountedRows final : public recipients::RowSource {
 public:
  explicit CountedRows(recipients::RowSource& rows) : rows_(rows) {}
  Result<bool> Next(recipients::Recipient& recipient) override {
    auto more = rows_.Next(recipient);
    at_end_ = !more || !*more;
    count_ += at_end_ ? 0 : 1;
    return more;
  }
  // Of the whole list, be it within the range or behind it.
  Result<std::int64_t> CountToTheEnd() {
    if (rows_.size()) return *rows_.size();
    recipients::Recipient row;
    while (!at_end_) {
      if (const auto more = Next(row); !more) return more.error();
    }
    return count_;
  }

 private:
  recipients::RowSource& rows_;
  std::int64_t count_ = 0;
  bool at_end_ = false;
};

}  // namespace

Result<std::unique_ptr<SqliteRunJournal>> SqliteRunJournal::Open(const JournalPlace& place) {
  auto database = OpenJournalFile(place);
  if (!database) return database.error();
  return std::unique_ptr<SqliteRunJournal>(new SqliteRunJournal(place, *std::move(database)));
}

Result<std::unique_ptr<JournalledRun>> SqliteRunJournal::Begin(const NewMailing& mailing, recipients::RowSource& rows,
                                                               const std::optional<recipients::PartialRange>& range,
                                                               NewRun begins) {
  auto run = Freeze(mailing, rows, range, std::move(begins));
  // What was written of it is still in the log, which may be long.
  if (!run) IgnoreErrors(TakeLogIntoFile(place_, std::chrono::seconds(1), true));
  return run;
}

Result<std::unique_ptr<JournalledRun>> SqliteRunJournal::GoOn(MailingId mailing, RunKind kind,
                                                              const RecipientChoice& choice, NewRun begins) {
  return OfJournal(TakeUp(mailing, kind, choice, std::move(begins)));
}

Result<std::unique_ptr<JournalledRun>> SqliteRunJournal::Freeze(const NewMailing& mailing, recipients::RowSource& rows,
                                                                const std::optional<recipients::PartialRange>& range,
                                                                NewRun begins) {
  auto beginning = Beginning::On(place_);
  if (!beginning) return beginning.error();
  platform::Database& database = *beginning->database;
  const auto id = AddMailing(database, mailing);
  if (!id) return id.error();
  auto lock = MailingLock::Take(place_.Locks(), *id);
  if (!lock) return lock.error();
  if (auto added = AddFiles(database, *id, mailing.files); !added) return added.error();
  if (auto forgotten = ForgetUnused(database, Seconds(place_)); !forgotten) return forgotten.error();
  auto freezing = Freezing::Into(database, *id);
  if (!freezing) return freezing.error();
  const auto add = [&](const recipients::Recipient& row, std::int64_t) -> Result<bool> {
    const auto added = freezing->Add(row);
    return added ? Result<bool>(true) : Result<bool>(added.error());
  };
  CountedRows counted(rows);
  if (auto walked = recipients::Walk(counted, range, nullptr, add); !walked) return walked.error();
  if (auto flushed = freezing->Flush(); !flushed) return flushed.error();
  const auto list = counted.CountToTheEnd();
  if (!list) return list.error();
  BegunRun run;
  run.mailing = *id;
  run.list = *list;
  run.first = range ? range->first : 1;
  run.recipients = run.scope = freezing->recipients();
  run.choice = SetOf({ResultState::kNotTried});
  if (auto set = SetRecipients(database, *id, run.first, run.recipients); !set) return set.error();
  StoredRun stored = StoredAs(place_, *id, RunKind::kFirst, std::move(begins));
  stored.entry.recipients = run.scope;
  const auto run_id = AddRun(database, stored, run.number);
  if (!run_id) return run_id.error();
  run.id = *run_id;
  return SqliteJournalledRun::Start(place_, std::move(beginning->database), std::move(beginning->transaction),
                                    *std::move(lock), run);
}

Result<std::unique_ptr<JournalledRun>> SqliteRunJournal::TakeUp(MailingId mailing, RunKind kind,
                                                                const RecipientChoice& choice, NewRun begins) {
  // First: nothing that is read afterwards changes under us, and nobody who has it is mistaken for gone.
  auto lock = MailingLock::Take(place_.Locks(), mailing);
  if (!lock) return lock.error();
  if (auto taken = TakeWhatWasToldLast(mailing); !taken) return taken.error();
  auto beginning = Beginning::On(place_);
  if (!beginning) return beginning.error();
  platform::Database& database = *beginning->database;
  const auto stored = ReadMailing(database, mailing);
  if (!stored) return stored.error();
  BegunRun run;
  run.mailing = mailing;
  if (stored->runs.size() >= std::numeric_limits<std::uint16_t>::max()) {
    return Error{Failure::kUnavailable, "This mailing has had as many runs as can be kept.",
                 "Make a group of those who are left, and send to that."};
  }
  run.number = static_cast<std::uint16_t>(stored->runs.size() + 1);
  run.first = stored->first;
  run.recipients = stored->entry.recipients;
  run.list = run.first + run.recipients - 1;
  run.choice = choice;
  run.goes_on = kind == RunKind::kResume;
  const Doubt doubt = DoubtOf(stored->runs.back(), false, place_.boot);
  const auto scope = SettleDoubts(database, *stored, doubt, choice);
  if (!scope) return scope.error();
  if (*scope == 0) return Error{Failure::kNoInput, "Nobody is left to whom this could be sent.", ""};
  run.scope = *scope;
  StoredRun begun = StoredAs(place_, mailing, kind, std::move(begins));
  begun.entry.recipients = run.scope;
  const auto run_id = AddRun(database, begun, run.number);
  if (!run_id) return run_id.error();
  run.id = *run_id;
  return SqliteJournalledRun::Start(place_, std::move(beginning->database), std::move(beginning->transaction),
                                    *std::move(lock), run);
}

// By itself: what the new run tells takes its place, even where that run does not come about.
Result<void> SqliteRunJournal::TakeWhatWasToldLast(MailingId mailing) {
  auto transaction = platform::Transaction::Begin(database_);
  if (!transaction) return transaction.error();
  const auto stored = ReadMailing(database_, mailing);
  if (!stored) return stored.error();
  if (auto taken = TakeRecentIn(database_, place_, *stored); !taken) return taken;
  return transaction->Commit();
}

Result<KeptFile> SqliteRunJournal::Keep(std::string name, int fd) {
  auto content = KeepContent(database_, fd, name, Seconds(place_));
  if (!content) return content.error();
  return KeptFile{std::move(name), *std::move(content)};
}

Result<platform::UniqueFd> SqliteRunJournal::Open(const KeptFile& file) {
  auto fd = platform::OpenScratchFile(place_.file.parent_path());
  if (!fd) return fd;
  if (auto written = WriteContent(database_, file.content, fd->get()); !written) return written.error();
  if (::lseek(fd->get(), 0, SEEK_SET) != 0) return platform::SystemError("read", place_.file, errno);
  return fd;
}

Result<void> SqliteRunJournal::Forget(MailingId mailing) {
  const auto lock = MailingLock::Take(place_.Locks(), mailing);
  if (!lock) return lock.error();
  {
    auto transaction = platform::Transaction::Begin(database_);
    if (!transaction) return transaction.error();
    const auto there = ReadMailing(database_, mailing);
    if (!there && there.error().failure != Failure::kBadData) return there.error();
    if (auto forgotten = ForgetFiles(database_, mailing); !forgotten) return forgotten;
    if (auto forgotten = ForgetUnused(database_, Seconds(place_)); !forgotten) return forgotten;
    if (auto forgotten = ForgetMailing(database_, mailing); !forgotten) return forgotten;
    // Gives the pages back that nobody uses: they are gone from the file.
    if (auto given = database_.Execute("PRAGMA incremental_vacuum"); !given) return given;
    if (auto committed = transaction->Commit(); !committed) return committed;
  }
  RemoveRecentOf(place_, mailing);
  // What the log still has of it goes when those who read in it are done, at the latest with the last who has the file
  // open.
  IgnoreErrors(TakeLogIntoFile(place_, std::chrono::seconds(1), true));
  return {};
}

}  // namespace quillcast::run
