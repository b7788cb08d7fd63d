// What the journal tells of its mailings and their recipients.
#include <utility>

#include "run/journal/choice_filter.h"
#include "run/journal/journal_look.h"
#include "run/journal/kept_contents.h"
#include "run/journal/mailing_tables.h"
#include "run/journal/sqlite_run_journal.h"

namespace quillcast::run {
namespace {

Result<MailingCounts> Count(platform::Database& database, const StoredMailing& mailing, Doubt doubt) {
  if (mailing.counts) return *mailing.counts;
  auto blocks = StateBlocks::Of(database, database.path(), mailing.entry.id, mailing.entry.recipients);
  if (!blocks) return blocks.error();
  return CountStates(*blocks, doubt);
}

Result<MailingEntry> EntryOf(platform::Database& database, const JournalPlace& place, MailingId id, const Seen& seen) {
  auto stored = ReadMailing(database, id);
  if (!stored) return stored.error();
  const bool goes_on = GoesOn(seen, *stored);
  const auto counts = Count(database, *stored, DoubtOf(stored->runs.back(), goes_on, place.boot));
  if (!counts) return counts.error();
  MailingEntry entry = std::move(stored->entry);
  entry.counts = counts->states;
  entry.tried_again = counts->tried_again;
  for (StoredRun& run : stored->runs) {
    run.entry.standing = run.entry.ended ? RunStanding::kEnded : RunStanding::kCutOff;
    entry.runs.push_back(std::move(run.entry));
  }
  if (goes_on) entry.runs.back().standing = RunStanding::kGoesOn;
  return entry;
}

// Recipients one after the other, their rows and words beside their states.
class RowReader {
 public:
  static Result<RowReader> Of(platform::Database& database, const StoredMailing& mailing, Doubt doubt) {
    auto rows = database.Prepare("SELECT rows FROM rows WHERE id = ?");
    if (!rows) return rows.error();
    auto words = WordsReader::Of(database, database.path(), mailing.entry.id);
    if (!words) return words.error();
    return RowReader(mailing, doubt, *std::move(rows), *std::move(words), database.path());
  }

  // The one at `index`, whose record this is. In the order of the list.
  Result<const JournalRow*> Read(std::int64_t index, const char* octets) {
    const StateRecord record = ReadRecord(octets);
    row_.position = mailing_->first + index;
    row_.state = StateIn(doubt_, octets);
    row_.code = record.code;
    row_.attempts = record.attempts;
    row_.again = IsTriedAgain(row_.state, octets);
    row_.when.reset();
    if (record.when != 0) row_.when = std::chrono::sys_seconds(std::chrono::seconds(record.when));
    row_.run = record.run > 0 && record.run <= mailing_->runs.size() ? mailing_->runs[record.run - 1].entry.id : 0;
    row_.reply = {};
    row_.reply.code = record.reply;
    row_.reason.clear();
    if (row_.state != record.state) {
      row_.code = 1;
      row_.reply = {};
      row_.reason = ReasonOf(doubt_, record.state);
    } else if (record.words != 0) {
      if (auto read = ReadWords(record.words); !read) return read.error();
    }
    if (auto read = ReadFields(index); !read) return read.error();
    return &row_;
  }

 private:
  RowReader(const StoredMailing& mailing, Doubt doubt, platform::Statement rows, WordsReader words,
            std::filesystem::path file)
      : mailing_(&mailing), doubt_(doubt), rows_(std::move(rows)), words_(std::move(words)), file_(std::move(file)) {}

  Result<void> ReadWords(std::uint32_t number) {
    const auto words = words_.Read(number);
    if (!words) return words.error();
    row_.reply.enhanced = (*words)->texts[0];
    row_.reply.text = (*words)->texts[1];
    row_.reason = (*words)->texts[2];
    return {};
  }

  Result<void> ReadFields(std::int64_t index) {
    if (index / kBlockSize != block_) {
      block_ = index / kBlockSize;
      rows_.Reset();
      if (auto bound = rows_.Bind(1, BlockKey(mailing_->entry.id, block_)); !bound) return bound;
      const auto row = rows_.Step();
      if (!row) return row.error();
      frozen_ = FrozenRows(*row ? rows_.Bytes(0) : "");
      next_ = block_ * kBlockSize;
    }
    for (; next_ < index; ++next_) {
      if (!frozen_.Skip()) return DamagedMailingIn(file_);
    }
    ++next_;
    return frozen_.Next(row_.recipient) ? Result<void>() : DamagedMailingIn(file_);
  }

  const StoredMailing* mailing_;
  Doubt doubt_;
  platform::Statement rows_;
  WordsReader words_;
  std::filesystem::path file_;
  std::int64_t block_ = -1;
  std::int64_t next_ = 0;
  FrozenRows frozen_{{}};
  JournalRow row_;
};

// What can still be told of one that cannot be read.
Result<DamagedMailing> DamagedOne(platform::Database& database, MailingId mailing) {
  auto statement = database.Prepare(
      "SELECT (SELECT min(id) FROM runs WHERE mailing = ?1), subject, people FROM mailings WHERE id = ?1");
  if (!statement) return statement.error();
  if (auto bound = statement->Bind(1, mailing); !bound) return bound.error();
  const auto row = statement->Step();
  if (!row) return row.error();
  if (!*row) return DamagedMailing{mailing};
  return DamagedMailing{mailing, statement->Int(0), std::string(statement->Text(1)), std::string(statement->Text(2))};
}

// One that is damaged stops no other.
Result<JournalList> ListMailings(platform::Database& database, const JournalPlace& place) {
  const auto seen = SeeWhoGoesOn(database, place);
  if (!seen) return seen.error();
  const auto look = Look::At(database, place, seen->not_taken_in);
  if (!look) return look.error();
  const auto mailings = AllMailings(database);
  if (!mailings) return mailings.error();
  JournalList listed;
  for (const MailingId mailing : *mailings) {
    auto entry = EntryOf(database, place, mailing, *seen);
    if (entry) {
      listed.mailings.push_back(*std::move(entry));
      continue;
    }
    if (entry.error().failure != Failure::kBadData) return entry.error();
    auto damaged = DamagedOne(database, mailing);
    if (!damaged) return damaged.error();
    listed.damaged.push_back(*std::move(damaged));
  }
  return listed;
}

Result<MailingEntry> FindMailing(platform::Database& database, const JournalPlace& place, RunId run) {
  const auto seen = SeeWhoGoesOn(database, place);
  if (!seen) return seen.error();
  const auto look = Look::At(database, place, seen->not_taken_in);
  if (!look) return look.error();
  const auto mailing = MailingOf(database, run);
  if (!mailing) return mailing.error();
  return EntryOf(database, place, *mailing, *seen);
}

// A mailing as it is read at one look, and what is in doubt of it.
struct Sight {
  StoredMailing mailing;
  Doubt doubt;
};

// Gives the chosen ones' records in the order of the list, until `visit` gives false. `begin` comes before.
Result<void> WalkChosen(platform::Database& database, const JournalPlace& place, MailingId mailing,
                        const RecipientChoice& choice, const std::function<Result<void>(const Sight&)>& begin,
                        const std::function<Result<bool>(std::int64_t index, const char* record)>& visit) {
  const auto seen = SeeWhoGoesOn(database, place);
  if (!seen) return seen.error();
  const auto look = Look::At(database, place, seen->not_taken_in);
  if (!look) return look.error();
  auto stored = ReadMailing(database, mailing);
  if (!stored) return stored.error();
  const Doubt doubt = DoubtOf(stored->runs.back(), GoesOn(*seen, *stored), place.boot);
  const Sight sight{*std::move(stored), doubt};
  auto blocks = StateBlocks::Of(database, place.file, mailing, sight.mailing.entry.recipients);
  if (!blocks) return blocks.error();
  auto filter = ChoiceFilter::Of(database, place.file, mailing, choice);
  if (!filter) return filter.error();
  if (auto begun = begin(sight); !begun) return begun;
  return blocks->Walk(0, [&](std::int64_t block, std::string_view octets) -> Result<bool> {
    for (std::size_t at = 0; at < octets.size(); at += kRecordSize) {
      const char* record = octets.data() + at;
      const auto takes = filter->Takes(StateIn(doubt, record), record);
      if (!takes) return takes.error();
      if (!*takes) continue;
      auto on = visit(block * kBlockSize + static_cast<std::int64_t>(at / kRecordSize), record);
      if (!on || !*on) return on;
    }
    return true;
  });
}

Result<void> VisitRows(platform::Database& database, const JournalPlace& place, MailingId mailing,
                       const RecipientChoice& choice, std::int64_t skip,
                       const std::function<Result<bool>(const JournalRow&)>& visit) {
  std::optional<RowReader> reader;
  const auto begin = [&](const Sight& sight) -> Result<void> {
    auto made = RowReader::Of(database, sight.mailing, sight.doubt);
    if (!made) return made.error();
    reader.emplace(*std::move(made));
    return {};
  };
  return WalkChosen(database, place, mailing, choice, begin,
                    [&](std::int64_t index, const char* record) -> Result<bool> {
                      if (skip-- > 0) return true;
                      const auto row = reader->Read(index, record);
                      if (!row) return row.error();
                      return visit(**row);
                    });
}

Result<std::int64_t> CountChosen(platform::Database& database, const JournalPlace& place, MailingId mailing,
                                 const RecipientChoice& choice) {
  std::int64_t count = 0;
  auto walked = WalkChosen(
      database, place, mailing, choice, [](const Sight&) { return Result<void>(); },
      [&](std::int64_t, const char*) -> Result<bool> {
        ++count;
        return true;
      });
  if (!walked) return walked.error();
  return count;
}

Result<NewMailing> ReadInputs(platform::Database& database, MailingId mailing) {
  auto statement = database.Prepare("SELECT subject, people, inputs FROM mailings WHERE id = ?");
  if (!statement) return statement.error();
  if (auto bound = statement->Bind(1, mailing); !bound) return bound.error();
  const auto row = statement->Step();
  if (!row) return row.error();
  if (!*row) return NoSuchMailing();
  NewMailing inputs;
  inputs.subject = statement->Text(0);
  inputs.group = statement->Text(1);
  inputs.inputs = statement->Text(2);
  auto files = FilesOf(database, mailing);
  if (!files) return files.error();
  inputs.files = *std::move(files);
  return inputs;
}

}  // namespace

Result<JournalList> SqliteRunJournal::List() { return OfJournal(ListMailings(database_, place_)); }

Result<MailingId> SqliteRunJournal::MailingOf(RunId run) { return OfJournal(run::MailingOf(database_, run)); }

Result<MailingEntry> SqliteRunJournal::Find(RunId run) { return OfJournal(FindMailing(database_, place_, run)); }

Result<std::int64_t> SqliteRunJournal::Count(MailingId mailing, const RecipientChoice& choice) {
  return OfJournal(CountChosen(database_, place_, mailing, choice));
}

Result<void> SqliteRunJournal::Visit(MailingId mailing, const RecipientChoice& choice, std::int64_t skip,
                                     const std::function<Result<bool>(const JournalRow&)>& visit) {
  std::optional<Error> theirs;
  const auto watched = [&](const JournalRow& row) {
    auto on = visit(row);
    if (!on) theirs = on.error();
    return on;
  };
  auto visited = VisitRows(database_, place_, mailing, choice, skip, watched);
  return theirs ? Result<void>(*theirs) : OfJournal(std::move(visited));
}

Result<NewMailing> SqliteRunJournal::Inputs(MailingId mailing) { return OfJournal(ReadInputs(database_, mailing)); }

}  // namespace quillcast::run
