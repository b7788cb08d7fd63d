#include "recipients/recipient_store.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "recipients/store_connection.h"

namespace quillcast::recipients {
namespace {

using platform::Database;

template <std::size_t size>
using List = std::array<std::string_view, size>;

// The first of the eighteen columns in a "SELECT *": the two keys stand before it.
constexpr int kFirstFieldColumn = 2;
constexpr int kNameColumns = 3;

Result<CatalogueStatement> Bound(Database& database, StatementId id, Values values, std::string_view extra = {}) {
  auto statement = CatalogueStatement::Prepare(database, id, extra);
  if (!statement) return statement;
  if (const auto bound = statement->Bind(values); !bound) return bound.error();
  return statement;
}

Result<void> RunOn(Database& database, StatementId id, Values values) {
  auto statement = Bound(database, id, values);
  if (!statement) return statement.error();
  return statement->rows().Run();
}

Result<std::optional<RecipientGroup>> FindGroupOn(Database& database, std::string_view name) {
  auto found = Bound(database, StatementId::kFindGroup, List<1>{name});
  if (!found) return found.error();
  const auto row = found->rows().Step();
  if (!row) return row.error();
  if (!*row) return std::optional<RecipientGroup>();
  return std::optional<RecipientGroup>({.id = found->rows().Int(0),
                                        .name = std::string(found->rows().Text(1)),
                                        .sort_sql = std::string(found->rows().Text(2))});
}

StoredRecipient ReadWholeRow(const platform::Statement& row) {
  StoredRecipient stored{.id = row.Int(0), .recipient = {}};
  for (std::size_t field = 0; field < kFieldCount; ++field) {
    stored.recipient.values[field] = row.Text(kFirstFieldColumn + static_cast<int>(field));
  }
  return stored;
}

Result<std::vector<StoredRecipient>> ReadWholeRows(platform::Statement& rows) {
  std::vector<StoredRecipient> found;
  for (;;) {
    const auto row = rows.Step();
    if (!row) return row.error();
    if (!*row) return found;
    found.push_back(ReadWholeRow(rows));
  }
}

Error NoSuchGroup(std::string_view name) {
  return {Failure::kUsage, Say("There is no group \"{}\".", name),
          "`quillcast group list` shows the groups; `quillcast group new` makes one."};
}

List<kFieldCount + 1> KeyAndValues(std::string_view key, const Recipient& recipient) {
  List<kFieldCount + 1> values{key};
  std::copy(recipient.values.begin(), recipient.values.end(), values.begin() + 1);
  return values;
}

// Its rows were numbered as they were written, so the last number is their count.
Result<std::int64_t> SizeOfCopy(Database& database) {
  auto last = database.Prepare("SELECT coalesce(max(rowid), 0) FROM temp.[Copy]");
  if (!last) return last.error();
  const auto row = last->Step();
  return row ? Result<std::int64_t>(last->Int(0)) : row.error();
}

// For the statement that has its key at the end.
List<kFieldCount + 1> ValuesAndKey(std::string_view key, const Recipient& recipient) {
  auto values = KeyAndValues(key, recipient);
  std::rotate(values.begin(), values.begin() + 1, values.end());
  return values;
}

Result<bool> IsGroupOn(Database& database, std::string_view name) {
  const auto group = FindGroupOn(database, name);
  if (!group) return group.error();
  return group->has_value();
}

}  // namespace

Result<bool> RecipientCursor::Next(Recipient& recipient) {
  auto row = rows_.Step();
  if (!row || !*row) return row;
  if (columns_ == static_cast<int>(kFieldCount)) {
    for (int field = 0; field < columns_; ++field) recipient.values[field] = rows_.Text(field);
    return true;
  }
  recipient = {};
  recipient.values[kEmail] = rows_.Text(0);
  recipient.values[kFirstName] = rows_.Text(1);
  recipient.values[kLastName] = rows_.Text(2);
  return true;
}

Result<std::vector<std::string>> RecipientStore::ListGroupNames() const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  auto statement = Bound(*database, StatementId::kGroupNames, {});
  if (!statement) return statement.error();
  std::vector<std::string> names;
  for (;;) {
    const auto row = statement->rows().Step();
    if (!row) return row.error();
    if (!*row) return names;
    names.emplace_back(statement->rows().Text(0));
  }
}

Result<std::optional<RecipientGroup>> RecipientStore::FindGroup(std::string_view name) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  return FindGroupOn(*database, name);
}

Result<RecipientGroup> RecipientStore::RequireGroup(std::string_view name) const {
  auto group = FindGroup(name);
  if (!group) return group.error();
  if (!*group) return NoSuchGroup(name);
  return **group;
}

Result<std::int64_t> RecipientStore::CountRecipients(std::string_view group_name) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  const auto group = FindGroupOn(*database, group_name);
  if (!group) return group.error();
  if (!*group) return 0;
  const std::string key = std::to_string((*group)->id);
  auto statement = Bound(*database, StatementId::kListAddresses, List<1>{key});
  if (!statement) return statement.error();
  for (std::int64_t count = 0;; ++count) {
    const auto row = statement->rows().Step();
    if (!row) return row.error();
    if (!*row) return count;
  }
}

Result<std::optional<StoredRecipient>> RecipientStore::FindRecipient(std::int64_t group_id,
                                                                     std::string_view address) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  const std::string key = std::to_string(group_id);
  auto statement = Bound(*database, StatementId::kFindRecipient, List<2>{key, address});
  if (!statement) return statement.error();
  const auto row = statement->rows().Step();
  if (!row) return row.error();
  if (!*row) return std::optional<StoredRecipient>();
  return std::optional(ReadWholeRow(statement->rows()));
}

Result<void> RecipientStore::RunAlone(StatementId id, Values values) {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  return RunOn(*database, id, values);
}

Result<bool> RecipientStore::RunUnless(const std::function<Result<bool>(Database&)>& is_there, StatementId id,
                                       Values values) {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  auto transaction = platform::Transaction::Begin(*database);
  if (!transaction) return transaction.error();
  auto there = is_there(*database);
  if (!there) return there;
  if (*there) return false;
  if (const auto done = RunOn(*database, id, values); !done) return done.error();
  if (const auto done = transaction->Commit(); !done) return done.error();
  return true;
}

Result<bool> RecipientStore::CreateGroupIfFree(std::string_view name) {
  return RunUnless([&](Database& database) { return IsGroupOn(database, name); }, StatementId::kCreateGroup,
                   List<1>{name});
}

Result<bool> RecipientStore::RenameGroupIfFree(std::string_view old_name, std::string_view new_name) {
  return RunUnless([&](Database& database) { return IsGroupOn(database, new_name); }, StatementId::kRenameGroup,
                   List<2>{new_name, old_name});
}

Result<bool> RecipientStore::AddRecipientIfNew(std::int64_t group_id, const Recipient& recipient) {
  const std::string key = std::to_string(group_id);
  return RunUnless(
      [&](Database& database) -> Result<bool> {
        auto found = Bound(database, StatementId::kFindDuplicate, List<2>{key, recipient.email()});
        return found ? found->rows().Step() : found.error();
      },
      StatementId::kAddRecipient, KeyAndValues(key, recipient));
}

Result<bool> RecipientStore::UpdateRecipientIfNew(std::int64_t group_id, std::int64_t recipient_id,
                                                  const Recipient& recipient) {
  const std::string group_key = std::to_string(group_id);
  const std::string key = std::to_string(recipient_id);
  return RunUnless(
      [&](Database& database) -> Result<bool> {
        auto found = Bound(database, StatementId::kFindRecipient, List<2>{group_key, recipient.email()});
        if (!found) return found.error();
        const auto row = found->rows().Step();
        if (!row) return row.error();
        return *row && found->rows().Int(0) != recipient_id;
      },
      StatementId::kUpdateRecipient, ValuesAndKey(key, recipient));
}

Result<void> RecipientStore::DeleteRecipient(std::int64_t recipient_id) {
  const std::string key = std::to_string(recipient_id);
  return RunAlone(StatementId::kDeleteRecipient, List<1>{key});
}

Result<void> RecipientStore::DeleteFoundRecipient(std::int64_t recipient_id) {
  const std::string key = std::to_string(recipient_id);
  IgnoreErrors(RunAlone(StatementId::kFailingSelect, List<1>{key}));
  return DeleteRecipient(recipient_id);
}

Result<void> RecipientStore::DeleteGroup(std::string_view name) {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  auto transaction = platform::Transaction::Begin(*database);
  if (!transaction) return transaction.error();
  const auto group = FindGroupOn(*database, name);
  if (!group) return group.error();
  if (!*group) return NoSuchGroup(name);
  const std::string key = std::to_string((*group)->id);
  if (auto gone = RunOn(*database, StatementId::kDeleteGroup, List<1>{name}); !gone) return gone;
  const auto gone = RunOn(*database, StatementId::kDeleteGroupRecipients, List<1>{key});
  return gone ? transaction->Commit() : gone;
}

Result<void> RecipientStore::SetSort(std::int64_t group_id, std::string_view sort_sql) {
  const std::string key = std::to_string(group_id);
  return RunAlone(StatementId::kSetSort, List<2>{sort_sql, key});
}

Result<RecipientCursor> RecipientStore::ListRecipients(std::int64_t group_id, std::string_view sort_sql,
                                                       Reading reading) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  const std::string key = std::to_string(group_id);
  const List<1> values{key};
  constexpr int kColumns = static_cast<int>(kFieldCount);
  if (reading == Reading::kLive) {
    auto rows = Bound(*database, StatementId::kListFields, values, sort_sql);
    if (!rows) return rows.error();
    return RecipientCursor(std::move(*database), std::move(rows->rows()), kColumns);
  }
  {
    auto copy =
        CatalogueStatement::PrepareAfter("CREATE TEMP TABLE [Copy] AS ", *database, StatementId::kListFields, sort_sql);
    if (!copy) return copy.error();
    if (const auto bound = copy->Bind(values); !bound) return bound.error();
    if (const auto done = copy->rows().Run(); !done) return done.error();
  }
  database->ForgetCancel();  // the copy is private: whoever was cancelled may still want to know who is left in it
  const auto size = SizeOfCopy(*database);
  if (!size) return size.error();
  auto rows = database->Prepare("SELECT * FROM temp.[Copy] ORDER BY rowid");
  if (!rows) return rows.error();
  return RecipientCursor(std::move(*database), std::move(*rows), kColumns, *size);
}

Result<RecipientCursor> RecipientStore::ListNames(std::int64_t group_id, std::string_view sort_sql) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  const std::string key = std::to_string(group_id);
  auto rows = Bound(*database, StatementId::kListNames, List<1>{key}, sort_sql);
  if (!rows) return rows.error();
  return RecipientCursor(std::move(*database), std::move(rows->rows()), kNameColumns);
}

Result<std::vector<StoredRecipient>> RecipientStore::Find(std::int64_t group_id, std::size_t field,
                                                          Comparison comparison, std::string_view term) const {
  constexpr std::array kIds = {StatementId::kFindEqual, StatementId::kFindContaining, StatementId::kFindStarting,
                               StatementId::kFindEnding};
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  const std::string key = std::to_string(group_id);
  auto statement =
      Bound(*database, kIds[static_cast<std::size_t>(comparison)], List<2>{key, term}, kFields[field].search_column);
  if (!statement) return statement.error();
  return ReadWholeRows(statement->rows());
}

}  // namespace quillcast::recipients
