#include "recipients/edit/duplicates.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "recipients/recipient_search.h"
#include "recipients/store_connection.h"
#include "recipients/store_rows.h"
#include "recipients/text_order.h"
#include "smtp/envelope_address.h"

namespace quillcast::recipients {
namespace {

using platform::Database;

// Sixteen bytes for each recipient; the entries themselves are read again only where two hashes are the same.
struct Hashed {
  std::uint64_t hash;
  std::int64_t id;
};

struct Entry {
  std::int64_t id;
  std::int64_t group_id;
  std::string text;
};

// By which two entries are the same; equal as CompareText finds it.
std::string AddressOf(std::string_view entry) {
  const auto address = smtp::EnvelopeAddress(entry);
  return std::string(address ? address->text() : entry);
}

class DuplicateFinder {
 public:
  explicit DuplicateFinder(Database& database) : database_(database) {}

  Result<void> ReadGroup(const RecipientGroup& group) {
    names_[group.id] = group.name;
    const std::string key = std::to_string(group.id);
    auto rows = Bound(database_, StatementId::kListEntries, List<1>{key});
    if (!rows) return rows.error();
    return ForEachRow(rows->rows(), [&] {
      hashed_.push_back({HashText(AddressOf(rows->rows().Text(2))), rows->rows().Int(0)});
      return true;
    });
  }

  Result<void> Tell(const std::function<bool(const DuplicateSet&)>& visit) {
    auto statement = CatalogueStatement::Prepare(database_, StatementId::kEntriesOfKeys);
    if (!statement) return statement.error();
    for (const auto& keys : RunsOfEqualHash()) {
      auto sets = SetsOf(*statement, keys);
      if (!sets) return sets.error();
      for (const DuplicateSet& set : *sets) {
        if (!visit(set)) return {};
      }
    }
    return {};
  }

 private:
  // Each of two keys at least, in the order of the first.
  std::vector<std::vector<std::int64_t>> RunsOfEqualHash() {
    std::sort(hashed_.begin(), hashed_.end(),
              [](const Hashed& a, const Hashed& b) { return std::tie(a.hash, a.id) < std::tie(b.hash, b.id); });
    std::vector<std::vector<std::int64_t>> runs;
    for (auto begin = hashed_.begin(); begin != hashed_.end();) {
      const auto end =
          std::find_if(begin, hashed_.end(), [begin](const Hashed& row) { return row.hash != begin->hash; });
      if (end - begin > 1) {
        runs.emplace_back();
        for (auto row = begin; row != end; ++row) runs.back().push_back(row->id);
      }
      begin = end;
    }
    std::sort(runs.begin(), runs.end());
    return runs;
  }

  // Entries of one hash, parted by what they are; nearly always one set.
  Result<std::vector<DuplicateSet>> SetsOf(CatalogueStatement& statement, std::span<const std::int64_t> keys) {
    std::vector<Entry> entries;
    const auto read = ForEachOfKeys(statement, keys, [&](const platform::Statement& row) {
      entries.push_back({row.Int(0), row.Int(1), std::string(row.Text(2))});
    });
    if (!read) return read.error();
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.id < b.id; });
    std::vector<DuplicateSet> sets;
    for (const Entry& entry : entries) {
      const std::string address = AddressOf(entry.text);
      auto set = std::find_if(sets.begin(), sets.end(),
                              [&](const DuplicateSet& known) { return CompareText(known.address, address) == 0; });
      if (set == sets.end()) set = sets.insert(sets.end(), DuplicateSet{address, {}});
      set->holders.push_back({entry.id, names_[entry.group_id], entry.text});
    }
    std::erase_if(sets, [](const DuplicateSet& set) { return set.holders.size() < 2; });
    return sets;
  }

  Database& database_;
  std::unordered_map<std::int64_t, std::string> names_;
  std::vector<Hashed> hashed_;
};

Result<std::vector<RecipientGroup>> AllGroups(Database& database) {
  auto rows = Bound(database, StatementId::kGroupsAndKeys, {});
  if (!rows) return rows.error();
  std::vector<RecipientGroup> groups;
  const auto read = ForEachRow(rows->rows(), [&] { return groups.push_back(ReadGroup(rows->rows())), true; });
  if (!read) return read.error();
  return groups;
}

// A group that is named twice counts once.
Result<std::vector<RecipientGroup>> GroupsOf(Database& database, std::span<const std::string> names) {
  if (names.empty()) return AllGroups(database);
  std::map<std::int64_t, RecipientGroup> groups;
  for (const std::string& name : names) {
    const auto group = RequireGroupOn(database, name);
    if (!group) return group.error();
    groups[group->id] = *group;
  }
  std::vector<RecipientGroup> once;
  once.reserve(groups.size());
  for (const auto& [id, group] : groups) once.push_back(group);
  return once;
}

Result<void> FindDuplicatesOn(Database& database, std::span<const std::string> names,
                              const std::function<bool(const DuplicateSet&)>& visit) {
  const auto groups = GroupsOf(database, names);
  if (!groups) return groups.error();
  DuplicateFinder finder(database);
  for (const RecipientGroup& group : *groups) {
    if (auto read = finder.ReadGroup(group); !read) return read;
  }
  return finder.Tell(visit);
}

}  // namespace

Result<void> FindDuplicates(const RecipientStore& store, std::span<const std::string> groups,
                            const std::function<bool(const DuplicateSet&)>& visit) {
  auto database = OpenStore(store.file(), store.patience());
  if (!database) return database.error();
  return FindDuplicatesOn(*database, groups, visit);
}

Result<std::int64_t> DeleteDuplicates(const RecipientStore& store, std::string_view group,
                                      const OnProgress& on_progress) {
  Edit edit(store, on_progress);
  if (const auto begun = edit.Begin(); !begun) return begun.error();
  const auto found = edit.RequireGroup(group);
  if (!found) return found.error();
  std::vector<std::int64_t> keys;
  const std::vector<std::string> names = {found->name};
  const auto read = FindDuplicatesOn(edit.database(), names, [&](const DuplicateSet& set) {
    for (std::size_t at = 1; at < set.holders.size(); ++at) keys.push_back(set.holders[at].id);
    return true;
  });
  if (!read) return read.error();
  edit.ExpectMore(keys.size());
  for (const std::int64_t key : keys) {
    if (const auto goes_on = edit.Advance(); !goes_on) return goes_on.error();
    const auto row = edit.FindRow(key);
    if (!row) return row.error();
    if (const auto gone = edit.Delete(**row); !gone) return gone.error();
  }
  const auto rows = static_cast<std::int64_t>(keys.size());
  const auto done = edit.Commit({.kind = EditKind::kDuplicates, .group = found->name, .rows = rows});
  if (!done) return done.error();
  return rows;
}

Sentence DeleteDuplicatesQuestion(std::int64_t recipients, std::string_view group) {
  if (recipients == 1) return Say("Are you sure you want to delete one duplicate from '{}'?", group);
  return Say("Are you sure you want to delete {} duplicates from '{}' and keep the first of each?",
             NumberValue(recipients), group);
}

Result<std::vector<Holder>> GroupsOfAddress(const RecipientStore& store, std::string_view address) {
  auto database = OpenStore(store.file(), store.patience());
  if (!database) return database.error();
  const auto groups = AllGroups(*database);
  if (!groups) return groups.error();
  const std::string wanted = AddressOf(address);
  if (const auto usable = CheckTermLength(wanted); !usable) return usable.error();
  auto rows = Bound(*database, StatementId::kEntriesHolding, List<1>{wanted});
  if (!rows) return rows.error();
  std::vector<Holder> holders;
  const auto read = ForEachRow(rows->rows(), [&] {
    const std::string entry(rows->rows().Text(2));
    // The address may stand in a longer one, and "_" in it is a wildcard.
    if (CompareText(AddressOf(entry), wanted) != 0) return true;
    const auto group = std::find_if(groups->begin(), groups->end(),
                                    [&](const RecipientGroup& known) { return known.id == rows->rows().Int(1); });
    if (group != groups->end()) holders.push_back({rows->rows().Int(0), group->name, entry});
    return true;
  });
  if (!read) return read.error();
  return holders;
}

}  // namespace quillcast::recipients
