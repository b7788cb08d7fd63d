#include "recipients/recipient_store.h"

#include <algorithm>
#include <array>
#include <map>
#include <unordered_map>

#include "platform/text.h"
#include "recipients/store_connection.h"
#include "recipients/store_rows.h"
#include "recipients/text_order.h"

namespace quillcast::recipients {
namespace {

using platform::Database;

constexpr int kNameColumns = 3;
constexpr std::size_t kVisitedAtOnce = 5000;

// Without the blanks and control characters around it.
std::string_view Bare(std::string_view entry) {
  const auto is_around = [](char c) { return static_cast<unsigned char>(c) <= ' ' || c == '\x7F'; };
  while (!entry.empty() && is_around(entry.front())) entry.remove_prefix(1);
  while (!entry.empty() && is_around(entry.back())) entry.remove_suffix(1);
  return entry;
}

struct BeforeInStore {
  bool operator()(const std::string& a, const std::string& b) const { return CompareText(a, b) < 0; }
};

// The places, among the addresses, of those that were not found, by what they are without what stands around them.
using Missing = std::multimap<std::string, std::size_t, BeforeInStore>;

// Looks through a whole group, for no index knows entries so.
Result<void> FindBare(Database& database, const std::string& group_key, const Missing& missing,
                      std::vector<std::int64_t>& keys) {
  auto rows = Bound(database, StatementId::kListEntries, List<1>{group_key});
  if (!rows) return rows.error();
  return ForEachRow(rows->rows(), [&] {
    const std::string_view entry = rows->rows().Text(2);
    const std::string shown = platform::Printable(entry, entry.size());
    for (const std::string_view name : {Bare(entry), Bare(shown)}) {
      const auto [begin, end] = missing.equal_range(std::string(name));
      for (auto found = begin; found != end; ++found) {
        if (keys[found->second] == 0) keys[found->second] = rows->rows().Int(0);
      }
    }
    return true;
  });
}

// Its rows were numbered as they were written, so the last number is their count.
Result<std::int64_t> SizeOfCopy(Database& database) {
  auto last = database.Prepare("SELECT coalesce(max(rowid), 0) FROM temp.[Copy]");
  if (!last) return last.error();
  const auto row = last->Step();
  return row ? Result<std::int64_t>(last->Int(0)) : row.error();
}

Result<bool> HasRow(Database& database, StatementId id, Values values) {
  auto found = Bound(database, id, values);
  return found ? found->rows().Step() : found.error();
}

Result<bool> IsGroupOn(Database& database, std::string_view name) {
  const auto group = FindGroupOn(database, name);
  if (!group) return group.error();
  return group->has_value();
}

Result<bool> IsWritten(const Result<std::optional<std::int64_t>>& key) {
  if (!key) return key.error();
  return key->has_value();
}

}  // namespace

Error GroupGone() {
  return {Failure::kUsage, "The group is no longer there.", "Another program has deleted it; choose another group."};
}

Error RecipientGone() {
  return {Failure::kUsage, "The recipient is no longer there.",
          "Another program has deleted it or moved it to another group; add it anew."};
}

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
  const auto read = ForEachRow(statement->rows(), [&] { return names.emplace_back(statement->rows().Text(0)), true; });
  if (!read) return read.error();
  return names;
}

Result<std::optional<RecipientGroup>> RecipientStore::FindGroup(std::string_view name) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  return FindGroupOn(*database, name);
}

Result<std::optional<RecipientGroup>> RecipientStore::FindAnyGroup(std::string_view name) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  return FindAnyGroupOn(*database, name);
}

Result<std::optional<RecipientGroup>> RecipientStore::FindGroupOfKey(std::int64_t group_id) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  return FindGroupOfKeyOn(*database, group_id);
}

Result<RecipientGroup> RecipientStore::RequireGroup(std::string_view name) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  return RequireGroupOn(*database, name);
}

Result<std::int64_t> RecipientStore::CountRecipients(std::string_view group_name) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  const auto group = FindAnyGroupOn(*database, group_name);
  if (!group) return group.error();
  if (!*group) return 0;
  const std::string key = std::to_string((*group)->id);
  auto statement = Bound(*database, StatementId::kListAddresses, List<1>{key});
  if (!statement) return statement.error();
  std::int64_t count = 0;
  const auto read = ForEachRow(statement->rows(), [&] { return ++count, true; });
  if (!read) return read.error();
  return count;
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
  return std::optional(ReadRecipient(statement->rows()));
}

Result<std::optional<std::int64_t>> RecipientStore::RunUnless(const std::function<Result<bool>(Database&)>& is_there,
                                                              StatementId id, Values values) {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  auto transaction = platform::Transaction::Begin(*database);
  if (!transaction) return transaction.error();
  const auto there = is_there(*database);
  if (!there) return there.error();
  if (*there) return std::optional<std::int64_t>();
  if (const auto done = RunOn(*database, id, values); !done) return done.error();
  if (const auto done = transaction->Commit(); !done) return done.error();
  return std::optional(database->LastInsertId());
}

Result<bool> RecipientStore::CreateGroupIfFree(std::string_view name) {
  return IsWritten(RunUnless([&](Database& database) { return IsGroupOn(database, name); }, StatementId::kCreateGroup,
                             List<1>{name}));
}

Result<bool> RecipientStore::RenameGroupIfFree(std::string_view old_name, std::string_view new_name) {
  const auto is_taken = [&](Database& database) -> Result<bool> {
    if (const auto old = RequireGroupOn(database, old_name); !old) return old.error();
    return IsGroupOn(database, new_name);
  };
  if (old_name.find('\'') == std::string_view::npos) {
    return IsWritten(RunUnless(is_taken, StatementId::kRenameGroup, List<2>{new_name, old_name}));
  }
  // The given statement takes no such name, which another program may have given; it is named by its key.
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  const auto group = RequireGroupOn(*database, old_name);
  if (!group) return group.error();
  const std::string key = std::to_string(group->id);
  return IsWritten(RunUnless(is_taken, StatementId::kNameGroup, List<2>{new_name, key}));
}

Result<std::optional<std::int64_t>> RecipientStore::AddRecipientIfNew(std::int64_t group_id,
                                                                      const Recipient& recipient) {
  const std::string key = std::to_string(group_id);
  const auto is_taken = [&](Database& database) -> Result<bool> {
    auto has_group = HasRow(database, StatementId::kGroupOfKey, List<1>{key});
    if (!has_group) return has_group;
    if (!*has_group) return GroupGone();
    return HasRow(database, StatementId::kFindDuplicate, List<2>{key, recipient.email()});
  };
  return RunUnless(is_taken, StatementId::kAddRecipient, KeyAndValues(key, recipient));
}

Result<bool> RecipientStore::UpdateRecipientIfNew(std::int64_t group_id, std::int64_t recipient_id,
                                                  const Recipient& recipient) {
  const std::string group_key = std::to_string(group_id);
  const std::string key = std::to_string(recipient_id);
  const auto is_taken = [&](Database& database) -> Result<bool> {
    auto before = Bound(database, StatementId::kRowOfKey, List<1>{key});
    if (!before) return before.error();
    auto is_there = before->rows().Step();
    if (!is_there) return is_there;
    if (!*is_there || ReadRecipient(before->rows()).group_id != group_id) return RecipientGone();
    auto found = Bound(database, StatementId::kFindRecipient, List<2>{group_key, recipient.email()});
    if (!found) return found.error();
    const auto row = found->rows().Step();
    if (!row) return row.error();
    return *row && found->rows().Int(0) != recipient_id;
  };
  return IsWritten(RunUnless(is_taken, StatementId::kUpdateRecipient, ValuesAndKey(key, recipient)));
}

Result<std::vector<std::int64_t>> RecipientStore::ListKeys(std::int64_t group_id, std::string_view sort_sql,
                                                           const OnProgress& on_read) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  return ReadKeys(*database, group_id, sort_sql, on_read);
}

template <typename Row>
Result<std::vector<Row>> RecipientStore::ReadByKey(StatementId id, std::span<const std::int64_t> keys,
                                                   const std::function<Row(const platform::Statement&)>& read) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  auto statement = CatalogueStatement::Prepare(*database, id);
  if (!statement) return statement.error();
  std::vector<Row> rows(keys.size());
  std::unordered_map<std::int64_t, std::size_t> places;
  for (std::size_t at = 0; at < keys.size(); ++at) places.emplace(keys[at], at);
  const auto done =
      ForEachOfKeys(*statement, keys, [&](const platform::Statement& row) { rows[places[row.Int(0)]] = read(row); });
  if (!done) return done.error();
  return rows;
}

Result<std::vector<GridRow>> RecipientStore::RowsOfKeys(std::span<const std::int64_t> keys,
                                                        std::int64_t group_id) const {
  return ReadByKey<GridRow>(StatementId::kNamesOfKeys, keys, [group_id](const platform::Statement& row) {
    if (group_id != kAnyGroup && row.Int(4) != group_id) return GridRow{};
    return GridRow{.id = row.Int(0),
                   .first_name = std::string(row.Text(2)),
                   .last_name = std::string(row.Text(3)),
                   .email = std::string(row.Text(1))};
  });
}

Result<std::vector<StoredRecipient>> RecipientStore::RecipientsOfKeys(std::span<const std::int64_t> keys) const {
  return ReadByKey<StoredRecipient>(StatementId::kRowsOfKeys, keys, ReadRecipient);
}

Result<void> RecipientStore::VisitByKey(std::span<const std::int64_t> keys,
                                        const std::function<bool(const StoredRecipient&)>& visit) const {
  for (std::size_t at = 0; at < keys.size(); at += kVisitedAtOnce) {
    const auto rows = RecipientsOfKeys(keys.subspan(at, std::min(kVisitedAtOnce, keys.size() - at)));
    if (!rows) return rows.error();
    for (const StoredRecipient& row : *rows) {
      if (row.id != 0 && !visit(row)) return {};
    }
  }
  return {};
}

Result<std::vector<std::int64_t>> RecipientStore::KeysOfAddresses(std::int64_t group_id,
                                                                  std::span<const std::string> addresses) const {
  auto database = OpenStore(file_, patience_);
  if (!database) return database.error();
  auto statement = CatalogueStatement::Prepare(*database, StatementId::kFindRecipient);
  if (!statement) return statement.error();
  const std::string key = std::to_string(group_id);
  std::vector<std::int64_t> keys;
  Missing missing;
  for (const std::string& address : addresses) {
    if (const auto bound = statement->Bind(List<2>{key, address}); !bound) return bound.error();
    const auto row = statement->rows().Step();
    if (!row) return row.error();
    if (!*row) missing.emplace(Bare(address), keys.size());
    keys.push_back(*row ? statement->rows().Int(0) : 0);
  }
  statement->rows().Reset();
  if (missing.empty()) return keys;
  if (const auto looked = FindBare(*database, key, missing, keys); !looked) return looked.error();
  return keys;
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
    auto copy = CatalogueStatement::PrepareWithin("CREATE TEMP TABLE [Copy] AS ", "", *database,
                                                  StatementId::kListFields, sort_sql);
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

}  // namespace quillcast::recipients
