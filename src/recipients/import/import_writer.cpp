#include "recipients/import/import_writer.h"

#include <algorithm>
#include <array>

#include "recipients/recipient.h"
#include "recipients/recipient_store.h"
#include "recipients/store_connection.h"
#include "recipients/store_rows.h"

namespace quillcast::recipients {
namespace {

constexpr int kCacheMiB = 32;
constexpr std::int64_t kFirstBatch = 4096;
constexpr std::int64_t kLargestBatch = 524'288;
// A batch ends early when this much text waits for the report, so that long values cannot fill the memory.
constexpr std::size_t kMostKeptBack = std::size_t{16} * 1024 * 1024;

}  // namespace

ImportWriter::ImportWriter(platform::Database database, CatalogueStatement find, CatalogueStatement insert,
                           CatalogueStatement insert_several, platform::Statement version, std::int64_t group_id,
                           ImportReport& report, Keeping keeping)
    : database_(std::move(database)),
      find_(std::move(find)),
      insert_(std::move(insert)),
      insert_several_(std::move(insert_several)),
      version_(std::move(version)),
      group_id_(group_id),
      group_key_(std::to_string(group_id)),
      report_(report),
      keeping_(keeping),
      batch_size_(kFirstBatch) {}

Result<ImportWriter> ImportWriter::Open(const std::filesystem::path& store, std::int64_t group_id,
                                        StatementId statement, ImportReport& report, Keeping keeping,
                                        const platform::LockPatience& patience) {
  auto database = OpenStoreToFill(store, patience, kCacheMiB);
  if (!database) return database.error();
  auto find = CatalogueStatement::Prepare(*database, StatementId::kFindDuplicate);
  if (!find) return find.error();
  auto insert = CatalogueStatement::Prepare(*database, statement);
  if (!insert) return insert.error();
  auto insert_several = CatalogueStatement::PrepareRows(*database, statement, kRowsAtOnce);
  if (!insert_several) return insert_several.error();
  auto version = database->Prepare("PRAGMA data_version");
  if (!version) return version.error();
  return ImportWriter(std::move(*database), std::move(*find), std::move(*insert), std::move(*insert_several),
                      std::move(*version), group_id, report, keeping);
}

Result<std::int64_t> ImportWriter::DataVersion() {
  version_.Reset();
  const auto row = version_.Step();
  if (!row) return row.error();
  const std::int64_t version = version_.Int(0);
  version_.Reset();
  return version;
}

Result<void> ImportWriter::FillFilter() {
  filter_.emplace();
  auto list = CatalogueStatement::Prepare(database_, StatementId::kListAddresses);
  if (!list) return list.error();
  const std::array<std::string_view, 1> values{group_key_};
  if (auto bound = list->Bind(values); !bound) return bound;
  for (;;) {
    const auto row = list->rows().Step();
    if (!row) return row.error();
    if (!*row) return {};
    filter_->Add(list->rows().Text(0));
  }
}

// Another program may have deleted the group between two batches.
// The filter is filled inside the first transaction, when nobody else can write. When the version is another one at the
// beginning of a later batch, somebody has written in between, and from then on the store is asked about every address.
Result<void> ImportWriter::Begin() {
  const bool is_first = seen_version_ == 0;
  auto begun = platform::Transaction::Begin(database_);
  if (!begun) return begun.error();
  transaction_.emplace(std::move(*begun));
  const auto has_group = IsGroupKey(database_, group_id_);
  if (!has_group) return has_group.error();
  if (!*has_group) return GroupGone();
  const auto version = DataVersion();
  if (!version) return version.error();
  if (is_first) {
    seen_version_ = *version;
    return FillFilter();
  }
  if (*version != seen_version_) filter_.reset();
  return {};
}

Result<void> ImportWriter::GiveUp(const Result<void>& failed) {
  transaction_.reset();
  report_.Drop();
  return WithTrueCause(database_, failed.error());
}

// The store is asked about what is in it, so that nothing may wait. The filter knows the address from here on: it is
// there, or comes there next.
Result<bool> ImportWriter::IsThere(std::string_view address) {
  if (filter_ && !filter_->Add(address)) return false;
  if (const auto inserted = InsertWaiting(); !inserted) return inserted.error();
  const std::array<std::string_view, 2> values{group_key_, address};
  if (const auto bound = find_.Bind(values, Lifetime::kOutlivesStep); !bound) return bound.error();
  auto row = find_.rows().Step();
  find_.rows().Reset();
  return row;
}

void ImportWriter::Wait(std::span<const std::string_view> values) {
  for (const std::string_view value : values) {
    waiting_.texts += value;
    waiting_.ends.push_back(waiting_.texts.size());
  }
  ++waiting_.rows;
}

// Several rows by one statement take a quarter less time than one each: what a statement does once, such as looking up
// the next key, is done once for all of them.
Result<void> ImportWriter::InsertWaiting() {
  if (waiting_.rows == 0) return {};
  const std::size_t values = waiting_.ends.size() / waiting_.rows;
  std::vector<std::string_view> all;
  std::size_t begin = 0;
  for (std::size_t at = 0; at < waiting_.ends.size(); ++at) {
    if (at % values == 0) all.emplace_back(group_key_);
    all.push_back(std::string_view(waiting_.texts).substr(begin, waiting_.ends[at] - begin));
    begin = waiting_.ends[at];
  }
  const bool is_full = waiting_.rows == kRowsAtOnce;
  CatalogueStatement& statement = is_full ? insert_several_ : insert_;
  const std::size_t step = is_full ? all.size() : values + 1;
  Result<void> inserted;
  for (std::size_t at = 0; at < all.size() && inserted; at += step) {
    inserted = statement.Bind(std::span(all).subspan(at, step), Lifetime::kOutlivesStep);
    if (!inserted) break;
    inserted = statement.rows().Run();
    statement.rows().Reset();
  }
  waiting_.texts.clear();
  waiting_.ends.clear();
  waiting_.rows = 0;
  return inserted;
}

Result<void> ImportWriter::Offer(std::span<const std::string_view> values) {
  if (!transaction_) {
    if (const auto begun = Begin(); !begun) return GiveUp(begun);
  }
  const std::string_view address = values.front();
  const auto there = IsThere(address);
  if (!there) return GiveUp(there.error());
  if (*there) {
    ++batch_.duplicates;
    report_.Duplicated(address);
    return CountRow();
  }
  Wait(values);
  if (waiting_.rows == kRowsAtOnce) {
    if (const auto inserted = InsertWaiting(); !inserted) return GiveUp(inserted);
  }
  ++batch_.added;
  report_.Added(address);
  return CountRow();
}

Result<void> ImportWriter::Ignore(std::string_view told) {
  ++batch_.ignored;
  report_.Ignored(told);
  return CountRow();
}

Result<void> ImportWriter::CountRow() {
  ++rows_in_batch_;
  const bool is_full = rows_in_batch_ >= batch_size_ || report_.BytesKeptBack() >= kMostKeptBack;
  if (!is_full) return {};
  batch_size_ = std::min(batch_size_ * 2, kLargestBatch);
  return Commit();
}

Result<void> ImportWriter::Commit() {
  if (const auto inserted = InsertWaiting(); !inserted) return GiveUp(inserted);
  if (transaction_ && keeping_ == Keeping::kCommit) {
    if (const auto done = transaction_->Commit(); !done) return GiveUp(done);
    transaction_.reset();
  }
  committed_.added += batch_.added;
  committed_.duplicates += batch_.duplicates;
  committed_.ignored += batch_.ignored;
  batch_ = {};
  rows_in_batch_ = 0;
  if (keeping_ == Keeping::kRollBack) {
    report_.Drop();
    return {};
  }
  return report_.Keep();
}

}  // namespace quillcast::recipients
