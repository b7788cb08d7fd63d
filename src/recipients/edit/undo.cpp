#include "recipients/edit/undo.h"

#include <string>
#include <vector>

#include "recipients/store_connection.h"
#include "recipients/store_rows.h"

namespace quillcast::recipients {
namespace {

using platform::Database;

Error NothingToUndo() {
  return {Failure::kUsage, "There is nothing to take back.",
          "Only the last change of several recipients can be taken back, and only once."};
}

Result<void> ForgetOn(Database& database) {
  for (const StatementId id :
       {StatementId::kForgetUndoStep, StatementId::kForgetUndoGroups, StatementId::kForgetUndoEmails}) {
    if (auto done = RunOn(database, id, {}); !done) return done;
  }
  return {};
}

Result<std::optional<EditStep>> FindUndoOn(Database& database) {
  auto table = Bound(database, StatementId::kHasUndo, {});
  if (!table) return table.error();
  const auto has_table = table->rows().Step();
  if (!has_table) return has_table.error();
  if (!*has_table) return std::optional<EditStep>();
  auto step = Bound(database, StatementId::kUndoStep, {});
  if (!step) return step.error();
  const auto row = step->rows().Step();
  if (!row) return row.error();
  if (!*row) return std::optional<EditStep>();
  const std::string_view word = step->rows().Text(0);
  EditStep found{.kind = EditKind::kDeleteGroup,
                 .group = std::string(step->rows().Text(1)),
                 .other_group = std::string(step->rows().Text(2)),
                 .rows = step->rows().Int(3)};
  while (found.kind != EditKind::kCapitalise && EditWord(found.kind) != word) {
    found.kind = static_cast<EditKind>(static_cast<int>(found.kind) - 1);
  }
  return std::optional(found);
}

// A group as it was before, and the mark of what became of it.
struct KeptGroup {
  RecipientGroup group;
  std::string after;
};

Result<std::vector<KeptGroup>> KeptGroups(Database& database) {
  auto rows = Bound(database, StatementId::kUndoGroups, {});
  if (!rows) return rows.error();
  std::vector<KeptGroup> groups;
  const auto read = ForEachRow(rows->rows(), [&] {
    return groups.push_back({ReadGroup(rows->rows()), std::string(rows->rows().Text(3))}), true;
  });
  if (!read) return read.error();
  return groups;
}

// True when the group is as it was; false when somebody sorted or deleted it since.
Result<bool> RestoreGroup(Database& database, const KeptGroup& kept) {
  const std::string key = std::to_string(kept.group.id);
  const auto named = FindGroupOn(database, kept.group.name);
  if (!named) return named.error();
  Result<void> done;
  if (kept.after.empty()) {
    if (*named) {
      return Error{Failure::kUsage, Say("There is a group \"{}\" again.", kept.group.name),
                   "Give it another name first."};
    }
    done = RunOn(database, StatementId::kPutGroupBack, List<1>{key});
  } else {
    const auto group = FindGroupOfKeyOn(database, kept.group.id);
    if (!group) return group.error();
    if (!*group || UndoSortMark((*group)->sort_sql) != kept.after) return false;
    done = RunOn(database, StatementId::kSetSort, List<2>{kept.group.sort_sql, key});
  }
  if (!done) return done.error();
  return true;
}

// The rows of a change, each looked at again before it is put back.
class RowRestorer {
 public:
  static Result<RowRestorer> On(Database& database) {
    std::vector<CatalogueStatement> all;
    for (const StatementId id : {StatementId::kRowOfKey, StatementId::kFindRecipient, StatementId::kUndoRowOfKey,
                                 StatementId::kPutRowBack, StatementId::kDeleteRecipient}) {
      auto statement = CatalogueStatement::Prepare(database, id);
      if (!statement) return statement.error();
      all.push_back(std::move(*statement));
    }
    return RowRestorer(database, std::move(all));
  }

  // `kept` stands at a row of kUndoRows. False when it was left as somebody made it since.
  Result<bool> Restore(const platform::Statement& kept) {
    const std::string key = std::to_string(kept.Int(0));
    const std::int64_t group_id = kept.Int(1);
    auto as_left = IsAsLeft(key, kept.Text(3));
    if (!as_left || !*as_left) return as_left;
    if (group_id == 0) return RunFor(kErase, key);
    auto has_room = HasRoom(kept, group_id);
    if (!has_room || !*has_room) return has_room;
    return RunFor(kPutBack, key);
  }

 private:
  enum Place : std::uint8_t { kRow, kSameAddress, kIsKept, kPutBack, kErase };

  RowRestorer(Database& database, std::vector<CatalogueStatement> statements)
      : database_(&database), statements_(std::move(statements)) {}

  Result<bool> RunFor(Place place, std::string_view key) {
    if (const auto bound = statements_[place].Bind(List<1>{key}); !bound) return bound.error();
    if (const auto done = statements_[place].rows().Run(); !done) return done.error();
    return true;
  }

  // Whether the row is what the change made of it.
  Result<bool> IsAsLeft(std::string_view key, std::string_view after) {
    auto& row = statements_[kRow];
    if (const auto bound = row.Bind(List<1>{key}); !bound) return bound.error();
    auto there = row.rows().Step();
    if (!there) return there;
    bool as_left = after.empty() == !*there;
    if (*there && as_left) {
      const StoredRecipient now = ReadRecipient(row.rows());
      as_left = RowDigest(now.group_id, now.recipient) == after;
    }
    row.rows().Reset();
    return as_left;
  }

  // Whether the row's group is there, and no other row has taken its address since.
  Result<bool> HasRoom(const platform::Statement& kept, std::int64_t group_id) {
    if (group_id != last_group_) {
      auto has_group = IsGroupKey(*database_, group_id);
      if (!has_group) return has_group;
      last_group_ = group_id;
      has_last_group_ = *has_group;
    }
    if (!has_last_group_) return false;
    return kept.Int(4) != 0 ? Result<bool>(true) : IsAddressFree(kept, group_id);
  }

  // Rows of the same change do not count: what held an address twice comes back so.
  Result<bool> IsAddressFree(const platform::Statement& kept, std::int64_t group_id) {
    const std::string group_key = std::to_string(group_id);
    auto& same = statements_[kSameAddress];
    if (const auto bound = same.Bind(List<2>{group_key, kept.Text(2)}); !bound) return bound.error();
    bool is_free = true;
    const auto read = ForEachRow(same.rows(), [&]() -> Result<bool> {
      const std::string key = std::to_string(same.rows().Int(0));
      auto& is_kept = statements_[kIsKept];
      if (const auto bound = is_kept.Bind(List<1>{key}); !bound) return bound.error();
      auto row = is_kept.rows().Step();
      is_kept.rows().Reset();
      if (!row) return row;
      is_free = *row;
      return is_free;
    });
    same.rows().Reset();
    if (!read) return read.error();
    return is_free;
  }

  Database* database_;
  std::vector<CatalogueStatement> statements_;
  std::int64_t last_group_ = 0;
  bool has_last_group_ = false;
};

bool IsCancelled(const platform::LockPatience& patience) {
  return patience.cancel != nullptr && patience.cancel->Requested() != platform::Stop::kNone;
}

Result<void> RestoreRows(Database& database, const platform::LockPatience& patience, const OnProgress& on_progress,
                         UndoOutcome& outcome) {
  auto restorer = RowRestorer::On(database);
  if (!restorer) return restorer.error();
  auto rows = Bound(database, StatementId::kUndoRows, {});
  if (!rows) return rows.error();
  return ForEachRow(rows->rows(), [&]() -> Result<bool> {
    if (IsCancelled(patience)) return Error{Failure::kTryAgain, "The work was cancelled; nothing was changed."};
    auto restored = restorer->Restore(rows->rows());
    if (!restored) return restored;
    ++(*restored ? outcome.restored : outcome.left);
    const auto done = outcome.restored + outcome.left;
    if (on_progress && done % kRowsBetweenReports == 0) on_progress(done, outcome.step.rows);
    return true;
  });
}

}  // namespace

std::string UndoSortMark(std::string_view sort_sql) { return "sort " + std::string(sort_sql); }

Result<void> MakeUndoTables(Database& database) {
  for (const StatementId id :
       {StatementId::kMakeUndoStep, StatementId::kMakeUndoGroups, StatementId::kMakeUndoEmails}) {
    if (auto done = RunOn(database, id, {}); !done) return done;
  }
  return ForgetOn(database);
}

Result<void> KeepUndoStep(Database& database, const EditStep& step) {
  const std::string rows = std::to_string(step.rows);
  return RunOn(database, StatementId::kKeepUndoStep, List<4>{EditWord(step.kind), step.group, step.other_group, rows});
}

Result<std::optional<EditStep>> FindUndo(const RecipientStore& store) {
  auto database = OpenStore(store.file(), store.patience());
  if (!database) return database.error();
  return FindUndoOn(*database);
}

Sentence UndoQuestion(const EditStep& step) {
  switch (step.kind) {
    case EditKind::kCapitalise:
      return Say("Do you want to take back the capitals in '{}'? Recipients: {}", step.group, NumberValue(step.rows));
    case EditKind::kSort:
      return Say("Do you want to take back the order of '{}'?", step.group);
    case EditKind::kMove:
      return Say("Do you want to take back the move from '{}' to '{}'? Recipients: {}", step.group, step.other_group,
                 NumberValue(step.rows));
    case EditKind::kCopy:
      return Say("Do you want to take back the copy from '{}' to '{}'? Recipients: {}", step.group, step.other_group,
                 NumberValue(step.rows));
    case EditKind::kMerge:
      return Say("Do you want to take back the merge of '{}' into '{}'? Recipients: {}", step.group, step.other_group,
                 NumberValue(step.rows));
    case EditKind::kDelete:
      return Say("Do you want to bring back who was deleted from '{}'? Recipients: {}", step.group,
                 NumberValue(step.rows));
    case EditKind::kDuplicates:
      return Say("Do you want to bring back the duplicates that were deleted from '{}'? Recipients: {}", step.group,
                 NumberValue(step.rows));
    case EditKind::kDeleteGroup:
      break;
  }
  return Say("Do you want to bring back the group '{}'? Recipients: {}", step.group, NumberValue(step.rows));
}

Result<UndoOutcome> Undo(const RecipientStore& store, const OnProgress& on_progress) {
  auto database = OpenStoreToFill(store.file(), store.patience(), kEditCacheMiB);
  if (!database) return database.error();
  auto transaction = platform::Transaction::Begin(*database);
  if (!transaction) return transaction.error();
  const auto step = FindUndoOn(*database);
  if (!step) return step.error();
  if (!*step) return NothingToUndo();
  UndoOutcome outcome{.step = **step};
  const auto groups = KeptGroups(*database);
  if (!groups) return groups.error();
  for (const KeptGroup& kept : *groups) {
    const auto restored = RestoreGroup(*database, kept);
    if (!restored) return restored.error();
    if (!*restored) ++outcome.left;
  }
  if (const auto done = RestoreRows(*database, store.patience(), on_progress, outcome); !done) return done.error();
  if (const auto done = ForgetOn(*database); !done) return done.error();
  if (const auto done = transaction->Commit(); !done) return done.error();
  return outcome;
}

Result<void> ForgetUndo(const RecipientStore& store) {
  auto database = OpenStore(store.file(), store.patience());
  if (!database) return database.error();
  auto transaction = platform::Transaction::Begin(*database);
  if (!transaction) return transaction.error();
  const auto step = FindUndoOn(*database);
  if (!step) return step.error();
  if (!*step) return {};
  const auto done = ForgetOn(*database);
  return done ? transaction->Commit() : done;
}

}  // namespace quillcast::recipients
