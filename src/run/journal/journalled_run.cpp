#include "run/journal/journalled_run.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/utf8.h"
#include "run/journal/mailing_tables.h"

namespace quillcast::run {
namespace {

constexpr std::size_t kKnownBatches = 8;

// So much of what a server says of one recipient is kept, which can be most of a megabyte.
std::string Cut(std::string_view text) {
  constexpr std::size_t kMost = 4096;
  if (text.size() <= kMost) return std::string(text);
  text = text.substr(0, kMost);
  text.remove_suffix(platform::IncompleteUtf8Tail(text));
  return std::string(text);
}

template <typename Number>
Number UpTo(std::int64_t number) {
  return static_cast<Number>(std::clamp<std::int64_t>(number, 0, std::numeric_limits<Number>::max()));
}

}  // namespace

SqliteJournalledRun::SqliteJournalledRun(JournalPlace place, Parts parts, MailingLock lock, BegunRun run)
    : place_(std::move(place)),
      file_(FileAtPlace::Of(place_)),
      run_(std::move(run)),
      lock_(std::move(lock)),
      database_(std::move(parts.database)),
      blocks_(std::move(parts.blocks)),
      words_(std::move(parts.words)),
      read_rows_(std::move(parts.read_rows)),
      walk_(std::move(parts.walk)),
      reserving_(std::move(parts.reserving)),
      write_round_(std::move(parts.write_round)) {
  database_->OnCommit([this](int pages) { log_pages_ = pages; });
}

Result<std::unique_ptr<JournalledRun>> SqliteJournalledRun::Start(const JournalPlace& place,
                                                                  std::unique_ptr<platform::Database> database,
                                                                  platform::Transaction transaction, MailingLock lock,
                                                                  const BegunRun& run) {
  auto blocks = StateBlocks::Of(*database, place.file, run.mailing, run.recipients);
  if (!blocks) return blocks.error();
  auto words = WordsWriter::After(*database, place.file, run.mailing);
  if (!words) return words.error();
  auto rows = database->Prepare("SELECT rows FROM rows WHERE id = ?");
  if (!rows) return rows.error();
  auto round = database->Prepare("UPDATE runs SET round = ? WHERE id = ?");
  if (!round) return round.error();
  auto filter = ChoiceFilter::Of(*database, place.file, run.mailing, run.choice);
  if (!filter) return filter.error();
  auto ahead = ChoiceFilter::Of(*database, place.file, run.mailing, run.choice);
  if (!ahead) return ahead.error();
  Parts parts{std::move(database),
              *std::move(blocks),
              *std::move(words),
              *std::move(rows),
              *std::move(round),
              ScopeWalk(*std::move(filter), run.recipients),
              ScopeWalk(*std::move(ahead), run.recipients)};
  std::unique_ptr<SqliteJournalledRun> started(new SqliteJournalledRun(place, std::move(parts), std::move(lock), run));
  platform::Transaction begun = std::move(transaction);  // goes back, where it does, before its connection ends
  started->database_->ForgetCancel();  // who cancels the sending still wants to know what became of it
  if (auto log = started->BeginRecentLog(); !log) return log.error();
  if (auto reserved = started->ReserveBatch(); !reserved) return reserved.error();
  if (auto written = started->Write(); !written) return written.error();
  auto sync = LogSync::Start(place);
  if (!sync) return sync.error();
  started->sync_ = *std::move(sync);
  if (auto committed = begun.Commit(); !committed) return committed.error();
  started->Written();
  return std::unique_ptr<JournalledRun>(std::move(started));
}

std::uint32_t SqliteJournalledRun::Now() const {
  const auto now = std::chrono::floor<std::chrono::seconds>(place_.clock->Now());
  return UpTo<std::uint32_t>(now.time_since_epoch().count());
}

Result<void> SqliteJournalledRun::OpenBlock(std::int64_t block) {
  read_rows_.Reset();
  if (auto bound = read_rows_.Bind(1, BlockKey(run_.mailing, block)); !bound) return bound;
  const auto row = read_rows_.Step();
  if (!row) return row.error();
  if (!*row) return DamagedMailingIn(place_.file);
  rows_octets_ = read_rows_.Bytes(0);
  read_rows_.Reset();
  rows_ = FrozenRows(rows_octets_);
  rows_block_ = block;
  next_row_ = block * kBlockSize;
  return {};
}

Result<bool> SqliteJournalledRun::Next(recipients::Recipient& recipient, std::int64_t& position) {
  const auto index = walk_.Next(blocks_);
  if (!index) return index.error();
  if (!*index) return false;
  if (auto read = ReadRow(**index, recipient); !read) return read.error();
  const auto octets = blocks_.Look(**index);
  if (!octets) return octets.error();
  const StateRecord record = ReadRecord(*octets);
  before_ = {record.state, run_.goes_on ? record.tries : 0};
  position = run_.first + **index;
  return true;
}

Result<void> SqliteJournalledRun::Again(std::int64_t position, recipients::Recipient& recipient) {
  return ReadRow(position - run_.first, recipient);
}

// Before the run can be seen: where it is missing then, it was lost.
Result<void> SqliteJournalledRun::BeginRecentLog() {
  const auto stored = ReadMailing(*database_, run_.mailing);
  if (!stored) return stored.error();
  auto log = RecentLog::Begin(place_, stored->runs.back());
  if (!log) return log.error();
  recent_ = *std::move(log);
  return {};
}

Result<void> SqliteJournalledRun::Change(std::int64_t index, const StateRecord& record) {
  recent_->Changed(index, record);
  return blocks_.Change(index, record);
}

// The rows of a block can only be read one after the other.
Result<void> SqliteJournalledRun::ReadRow(std::int64_t index, recipients::Recipient& recipient) {
  if (index / kBlockSize != rows_block_ || index < next_row_) {
    if (auto opened = OpenBlock(index / kBlockSize); !opened) return opened;
  }
  for (; next_row_ < index; ++next_row_) {
    if (!rows_.Skip()) return DamagedMailingIn(place_.file);
  }
  if (!rows_.Next(recipient)) return DamagedMailingIn(place_.file);
  ++next_row_;
  return {};
}

void SqliteJournalledRun::Note(const Result<void>& done) {
  if (!done && !failed_) failed_ = done.error();
}

void SqliteJournalledRun::GoesOut(std::int64_t position) { Note(TryGoesOut(position - run_.first)); }

Result<void> SqliteJournalledRun::TryGoesOut(std::int64_t index) {
  const auto octets = blocks_.Look(index);
  if (!octets) return octets.error();
  StateRecord record = ReadRecord(*octets);
  if (record.state == ResultState::kInFlight) return {};  // again, over another connection
  if (!record.reserved && (batches_.empty() || index > batches_.back().last)) {
    reserving_.SkipTo(index);
    if (auto reserved = ReserveBatch(); !reserved) return reserved;
    const auto anew = blocks_.Look(index);
    if (!anew) return anew.error();
    record.reserved = IsReservedAt(*anew);
  }
  // The mark of somebody who is not reserved, out of the order of the list or a second time, is what has to be durable.
  const std::int64_t commit = record.reserved ? CommitThatReserves(index) : commits_ + 1;
  if (!std::exchange(record.reserved, true)) ++open_;
  awaited_ = std::max(awaited_, commit);
  to_be_durable_ = std::max(to_be_durable_, commit);
  in_flight_.emplace(index, record);
  record = {ResultState::kInFlight, true, UpTo<std::uint8_t>(record.attempts + 1), run_.number, Now(), 0, 0, 0};
  return Change(index, record);
}

std::int64_t SqliteJournalledRun::CommitThatReserves(std::int64_t index) const {
  const auto batch = std::ranges::find_if(batches_, [&](const Batch& each) { return index <= each.last; });
  return batch == batches_.end() ? commits_ + 1 : batch->commit;
}

Result<void> SqliteJournalledRun::ReserveBatch() {
  const std::int64_t size = std::max(kSmallestBatch, kDoubtful - open_);
  Batch batch{-1, commits_ + 1};
  for (std::int64_t reserved = 0; reserved < size;) {
    const auto index = reserving_.Next(blocks_);
    if (!index) return index.error();
    if (!*index) break;
    const auto octets = blocks_.Look(**index);
    if (!octets) return octets.error();
    StateRecord record = ReadRecord(*octets);
    if (record.run == run_.number) continue;  // settled meanwhile
    record.reserved = true;                   // nobody ahead of all who go out is so yet
    if (auto changed = Change(**index, record); !changed) return changed;
    batch.last = **index;
    ++reserved;
    ++open_;
  }
  if (batch.last < 0) return {};
  batches_.push_back(batch);
  if (batches_.size() > kKnownBatches) batches_.pop_front();
  to_be_durable_ = batch.commit;
  return {};
}

void SqliteJournalledRun::Settled(std::int64_t position, const smtp::Outcome& outcome) {
  Note(TrySettled(position - run_.first, outcome));
}

Result<void> SqliteJournalledRun::TrySettled(std::int64_t index, const smtp::Outcome& outcome) {
  const auto octets = blocks_.Look(index);
  if (!octets) return octets.error();
  StateRecord before = ReadRecord(*octets);
  if (const auto known = in_flight_.find(index); known != in_flight_.end()) {
    before = known->second;
    in_flight_.erase(known);
  }
  if (std::exchange(before.reserved, false)) --open_;
  ++settled_;
  return Change(index, outcome.is_decided() ? Verdict(before, outcome) : before);
}

void SqliteJournalledRun::IsTriedAgain(std::int64_t position, int tries) {
  Note(TryTriedAgain(position - run_.first, tries));
}

Result<void> SqliteJournalledRun::TryTriedAgain(std::int64_t index, int tries) {
  const auto octets = blocks_.Look(index);
  if (!octets) return octets.error();
  StateRecord record = ReadRecord(*octets);
  record.tries = UpTo<std::uint8_t>(tries);
  return Change(index, record);
}

StateRecord SqliteJournalledRun::Verdict(const StateRecord& before, const smtp::Outcome& outcome) {
  StateRecord record;
  record.state = StateOf(outcome.state);
  record.attempts = UpTo<std::uint8_t>(before.attempts + 1);
  record.run = run_.number;
  record.when = Now();
  record.code = UpTo<std::uint8_t>(static_cast<std::int32_t>(outcome.code));
  record.reply = UpTo<std::uint16_t>(outcome.reply.code);
  const ResultWords words{{Cut(outcome.reply.enhanced), Cut(outcome.reply.text), Cut(outcome.reason)}};
  const std::int64_t next = words_.next();
  record.words = words_.Add(words);
  if (words_.next() != next) recent_->Said(record.words, words);
  return record;
}

}  // namespace quillcast::run
