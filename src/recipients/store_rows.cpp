#include "recipients/store_rows.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string>
#include <vector>

#include "recipients/key_sorter.h"

namespace quillcast::recipients {
namespace {

using platform::Database;

// The first of the eighteen columns in a "SELECT *": the two keys stand before it.
constexpr int kFirstFieldColumn = 2;
// AUTOINCREMENT goes on from here, whether the row is still there or not.
constexpr const char* kLastKeyIsUsed =
    "SELECT 1 FROM [sqlite_sequence] WHERE [name] = 'Emails' AND [seq] = 9223372036854775807";

Error NoSuchGroup(std::string_view name) {
  return {Failure::kUsage, Say("There is no group \"{}\".", name), kNoSuchGroupRemedy};
}

// Tells how many of a group's rows are read; their number is looked up only for somebody who listens.
class ReadingProgress {
 public:
  explicit ReadingProgress(const OnProgress& on_read) : on_read_(on_read) {}
  Result<void> Expect(Database& database, std::string_view group_key) {
    if (!on_read_) return {};
    auto count = Bound(database, StatementId::kCountRows, List<1>{group_key});
    if (!count) return count.error();
    const auto row = count->rows().Step();
    if (!row) return row.error();
    total_ = count->rows().Int(0);
    return {};
  }
  void Advance() {
    constexpr std::int64_t kBetweenReports = 1 << 15;
    if (on_read_ && ++done_ % kBetweenReports == 0) on_read_(done_, total_);
  }

 private:
  const OnProgress& on_read_;
  std::int64_t done_ = 0;
  std::int64_t total_ = 0;
};

Result<std::vector<std::int64_t>> ReadSortedKeys(Database& database, std::string_view group_key,
                                                 std::span<const SortKey> by, ReadingProgress& progress) {
  std::vector<std::string_view> columns;
  for (const SortKey& key : by) columns.push_back(key.column);
  auto found =
      Bound(database, StatementId::kListSortTexts, List<1>{group_key}, fmt::format("{}", fmt::join(columns, "], [")));
  if (!found) return found.error();
  KeySorter sorter(by);
  const auto read = ForEachRow(found->rows(), [&] {
    sorter.Add(found->rows());
    progress.Advance();
    return true;
  });
  if (!read) return read.error();
  return std::move(sorter).Sorted();
}

}  // namespace

Result<CatalogueStatement> Bound(Database& database, StatementId id, Values values, std::string_view extra) {
  auto statement = CatalogueStatement::Prepare(database, id, extra);
  if (!statement) return statement;
  if (const auto bound = statement->Bind(values); !bound) return bound.error();
  return statement;
}

Error WithTrueCause(Database& database, const Error& error) {
  if (error.failure != Failure::kIo) return error;
  auto last = database.Prepare(kLastKeyIsUsed);
  if (!last) return error;
  const auto row = last->Step();
  if (!row || !*row) return error;
  return {Failure::kBadData, "No recipient can be added: the store has used the highest number that there is.",
          "Export the groups, move Group.mdb away, and import them into the new one that is made then."};
}

Result<void> RunOn(Database& database, StatementId id, Values values) {
  auto statement = Bound(database, id, values);
  if (!statement) return statement.error();
  const auto done = statement->rows().Run();
  return done ? done : WithTrueCause(database, done.error());
}

Result<void> ForEachRow(platform::Statement& rows, const std::function<Result<bool>()>& visit) {
  for (;;) {
    const auto row = rows.Step();
    if (!row) return row.error();
    if (!*row) return {};
    const auto goes_on = visit();
    if (!goes_on) return goes_on.error();
    if (!*goes_on) return {};
  }
}

Result<void> ForEachOfKeys(CatalogueStatement& statement, std::span<const std::int64_t> keys,
                           const std::function<void(const platform::Statement& row)>& visit) {
  for (; !keys.empty(); keys = keys.subspan(std::min(keys.size(), kKeysAtOnce))) {
    std::vector<std::string> texts;
    for (const std::int64_t key : keys.first(std::min(keys.size(), kKeysAtOnce))) texts.push_back(std::to_string(key));
    const std::vector<std::string_view> values(texts.begin(), texts.end());
    if (auto bound = statement.Bind(values); !bound) return bound;
    auto read = ForEachRow(statement.rows(), [&] { return visit(statement.rows()), true; });
    if (!read) return read;
  }
  return {};
}

RecipientGroup ReadGroup(const platform::Statement& row) {
  return {.id = row.Int(0), .name = std::string(row.Text(1)), .sort_sql = std::string(row.Text(2))};
}

StoredRecipient ReadRecipient(const platform::Statement& row) {
  StoredRecipient stored{.id = row.Int(0), .group_id = row.Int(1), .recipient = {}};
  for (std::size_t field = 0; field < kFieldCount; ++field) {
    stored.recipient.values[field] = row.Text(kFirstFieldColumn + static_cast<int>(field));
  }
  return stored;
}

namespace {

Result<std::optional<RecipientGroup>> FindGroupBy(StatementId statement, Database& database, std::string_view value) {
  auto found = Bound(database, statement, List<1>{value});
  if (!found) return found.error();
  const auto row = found->rows().Step();
  if (!row) return row.error();
  if (!*row) return std::optional<RecipientGroup>();
  return std::optional(ReadGroup(found->rows()));
}

Result<RecipientGroup> Required(const Result<std::optional<RecipientGroup>>& group, std::string_view name) {
  if (!group) return group.error();
  if (!*group) return NoSuchGroup(name);
  return **group;
}

}  // namespace

// The given statement finds all that it takes.
Result<std::optional<RecipientGroup>> FindAnyGroupOn(Database& database, std::string_view name) {
  const bool is_given = name.find('\'') == std::string_view::npos;
  return FindGroupBy(is_given ? StatementId::kFindGroup : StatementId::kFindAnyGroup, database, name);
}

Result<std::optional<RecipientGroup>> FindGroupOn(Database& database, std::string_view name) {
  auto found = FindAnyGroupOn(database, name);
  return found && *found ? FindGroupBy(StatementId::kFindGroup, database, name) : found;
}

Result<std::optional<RecipientGroup>> FindGroupOfKeyOn(Database& database, std::int64_t group_id) {
  return FindGroupBy(StatementId::kGroupOfKey, database, std::to_string(group_id));
}

Result<RecipientGroup> RequireGroupOn(Database& database, std::string_view name) {
  return Required(FindAnyGroupOn(database, name), name);
}

Result<RecipientGroup> RequireGroupToChangeOn(Database& database, std::string_view name) {
  return Required(FindGroupOn(database, name), name);
}

Result<std::vector<std::int64_t>> ReadKeys(Database& database, std::int64_t group_id, std::string_view sort_sql,
                                           const OnProgress& on_read) {
  const auto by = SortKeysOf(sort_sql);
  if (!by) return by.error();
  const std::string key = std::to_string(group_id);
  ReadingProgress progress(on_read);
  if (const auto expected = progress.Expect(database, key); !expected) return expected.error();
  if (!by->empty() && KeySorter::CanSortBy(*by)) return ReadSortedKeys(database, key, *by, progress);
  auto found = Bound(database, StatementId::kListKeys, List<1>{key}, sort_sql);
  if (!found) return found.error();
  std::vector<std::int64_t> keys;
  const auto read = ForEachRow(found->rows(), [&] {
    keys.push_back(found->rows().Int(0));
    progress.Advance();
    return true;
  });
  if (!read) return read.error();
  return keys;
}

Result<bool> IsGroupKey(Database& database, std::int64_t group_id) {
  const auto group = FindGroupOfKeyOn(database, group_id);
  return group ? Result<bool>(group->has_value()) : group.error();
}

List<kFieldCount + 1> KeyAndValues(std::string_view key, const Recipient& recipient) {
  List<kFieldCount + 1> values{key};
  std::copy(recipient.values.begin(), recipient.values.end(), values.begin() + 1);
  return values;
}

List<kFieldCount + 1> ValuesAndKey(std::string_view key, const Recipient& recipient) {
  auto values = KeyAndValues(key, recipient);
  std::rotate(values.begin(), values.begin() + 1, values.end());
  return values;
}

}  // namespace quillcast::recipients
