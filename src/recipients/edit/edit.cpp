#include "recipients/edit/edit.h"

#include <fmt/format.h>

#include <array>

#include "recipients/edit/undo.h"
#include "recipients/sort_order.h"
#include "recipients/store_connection.h"
#include "recipients/store_rows.h"

namespace quillcast::recipients {
namespace {

using platform::Database;

constexpr std::array<std::string_view, 8> kEditWords = {"capitalise", "sort",   "move",       "copy",
                                                        "merge",      "delete", "duplicates", "group"};

// Binds, runs and lets go of a statement that gives no rows.
Result<void> RunWith(CatalogueStatement& statement, Values values) {
  if (auto bound = statement.Bind(values, Lifetime::kOutlivesStep); !bound) return bound;
  auto done = statement.rows().Run();
  statement.rows().Reset();
  return done;
}

}  // namespace

std::string_view EditWord(EditKind kind) { return kEditWords[static_cast<std::size_t>(kind)]; }

// FNV-1a over each value and its end.
std::string RowDigest(std::int64_t group_id, const Recipient& recipient) {
  constexpr std::uint64_t kOffset = 0xCBF29CE484222325;
  constexpr std::uint64_t kPrime = 0x100000001B3;
  std::uint64_t hash = (kOffset ^ static_cast<std::uint64_t>(group_id)) * kPrime;
  for (const std::string& value : recipient.values) {
    for (const char c : value) hash = (hash ^ static_cast<std::uint8_t>(c)) * kPrime;
    hash = (hash ^ 0x100) * kPrime;
  }
  return fmt::format("{:016x}", hash);
}

Result<void> Edit::Begin() {
  auto database = OpenStoreToFill(file_, patience_, kEditCacheMiB);
  if (!database) return database.error();
  database_.emplace(std::move(*database));
  auto begun = platform::Transaction::Begin(*database_);
  if (!begun) return begun.error();
  transaction_.emplace(std::move(*begun));
  if (auto made = MakeUndoTables(*database_); !made) return made;
  return PrepareAll();
}

Result<void> Edit::PrepareAll() {
  for (const StatementId id : {StatementId::kRowOfKey, StatementId::kFindRecipient, StatementId::kFindDuplicate,
                               StatementId::kAddRecipient, StatementId::kUpdateRecipient, StatementId::kDeleteRecipient,
                               StatementId::kKeepRow, StatementId::kKeepNewRow}) {
    auto statement = CatalogueStatement::Prepare(*database_, id);
    if (!statement) return statement.error();
    prepared_.emplace(id, std::move(*statement));
  }
  return {};
}

Result<RecipientGroup> Edit::RequireGroup(std::string_view name) { return RequireGroupToChangeOn(*database_, name); }

Result<std::vector<std::int64_t>> Edit::KeysOf(const RecipientGroup& group) {
  return ReadKeys(*database_, group.id, {});
}

Result<std::optional<StoredRecipient>> Edit::FindRow(std::int64_t id) {
  const std::string key = std::to_string(id);
  if (const auto bound = Prepared(StatementId::kRowOfKey).Bind(List<1>{key}); !bound) return bound.error();
  const auto row = Prepared(StatementId::kRowOfKey).rows().Step();
  if (!row) return row.error();
  std::optional<StoredRecipient> found;
  if (*row) found = ReadRecipient(Prepared(StatementId::kRowOfKey).rows());
  Prepared(StatementId::kRowOfKey).rows().Reset();
  return found;
}

Result<bool> Edit::AddIfNew(std::int64_t group_id, const Recipient& recipient) {
  const std::string group_key = std::to_string(group_id);
  if (const auto bound = Prepared(StatementId::kFindDuplicate).Bind(List<2>{group_key, recipient.email()}); !bound)
    return bound.error();
  auto there = Prepared(StatementId::kFindDuplicate).rows().Step();
  Prepared(StatementId::kFindDuplicate).rows().Reset();
  if (!there) return there;
  if (*there) return false;
  if (const auto added = RunWith(Prepared(StatementId::kAddRecipient), KeyAndValues(group_key, recipient)); !added)
    return WithTrueCause(*database_, added.error());
  has_changed_ = true;
  const std::string key = std::to_string(database_->LastInsertId());
  const std::string digest = RowDigest(group_id, recipient);
  const auto kept = RunWith(Prepared(StatementId::kKeepNewRow), List<2>{key, digest});
  if (!kept) return kept.error();
  return true;
}

Result<void> Edit::Update(const StoredRecipient& before, const Recipient& after) {
  has_changed_ = true;
  const std::string key = std::to_string(before.id);
  const std::string digest = RowDigest(before.group_id, after);
  if (auto kept = RunWith(Prepared(StatementId::kKeepRow), List<3>{digest, "1", key}); !kept) return kept;
  return RunWith(Prepared(StatementId::kUpdateRecipient), ValuesAndKey(key, after));
}

// A store from elsewhere may hold an address twice in one group; then both may come back.
Result<bool> Edit::HasTwin(const StoredRecipient& row) {
  const std::string group_key = std::to_string(row.group_id);
  if (const auto bound = Prepared(StatementId::kFindRecipient).Bind(List<2>{group_key, row.recipient.email()}); !bound)
    return bound.error();
  bool has_twin = false;
  const auto read = ForEachRow(Prepared(StatementId::kFindRecipient).rows(), [&] {
    has_twin = Prepared(StatementId::kFindRecipient).rows().Int(0) != row.id;
    return !has_twin;
  });
  Prepared(StatementId::kFindRecipient).rows().Reset();
  if (!read) return read.error();
  return has_twin;
}

Result<void> Edit::Delete(const StoredRecipient& row) {
  has_changed_ = true;
  const auto has_twin = HasTwin(row);
  if (!has_twin) return has_twin.error();
  const std::string key = std::to_string(row.id);
  if (auto kept = RunWith(Prepared(StatementId::kKeepRow), List<3>{"", *has_twin ? "1" : "0", key}); !kept) return kept;
  return RunWith(Prepared(StatementId::kDeleteRecipient), List<1>{key});
}

Result<void> Edit::DeleteGroup(const RecipientGroup& group) {
  has_changed_ = true;
  const std::string key = std::to_string(group.id);
  if (auto kept = RunOn(*database_, StatementId::kKeepGroup, List<2>{"", key}); !kept) return kept;
  if (auto kept = RunOn(*database_, StatementId::kKeepGroupRows, List<1>{key}); !kept) return kept;
  if (auto gone = RunOn(*database_, StatementId::kDeleteGroup, List<1>{group.name}); !gone) return gone;
  return RunOn(*database_, StatementId::kDeleteGroupRecipients, List<1>{key});
}

// What the group is sorted by then is kept with a mark, so that no sort at all differs from a group that is gone.
Result<void> Edit::SetSort(const RecipientGroup& group, std::string_view sort_sql) {
  if (IsSameSort(group.sort_sql, sort_sql)) return {};
  has_changed_ = true;
  const std::string key = std::to_string(group.id);
  const std::string after = UndoSortMark(sort_sql);
  if (auto kept = RunOn(*database_, StatementId::kKeepGroup, List<2>{after, key}); !kept) return kept;
  return RunOn(*database_, StatementId::kSetSort, List<2>{sort_sql, key});
}

void Edit::Step() {
  ++done_;
  if (on_progress_ && done_ % kRowsBetweenReports == 0) on_progress_(done_, total_);
}

void Edit::CountRows() {
  database_->OnWrittenRow([this] { Step(); });
}

Result<void> Edit::Advance() {
  Step();
  return CheckCancel();
}

Result<void> Edit::CheckCancel() const {
  if (patience_.cancel == nullptr || patience_.cancel->Requested() == platform::Stop::kNone) return {};
  return Error{Failure::kTryAgain, "The work was cancelled; nothing was changed."};
}

Result<void> Edit::Commit(const EditStep& step) {
  if (!has_changed_) return {};
  if (auto goes_on = CheckCancel(); !goes_on) return goes_on;
  if (auto kept = KeepUndoStep(*database_, step); !kept) return kept;
  prepared_.clear();  // no statement may be under way
  return transaction_->Commit();
}

}  // namespace quillcast::recipients
