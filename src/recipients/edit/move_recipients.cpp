#include "recipients/edit/move_recipients.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "recipients/sort_order.h"
#include "recipients/store_rows.h"

namespace quillcast::recipients {
namespace {

enum class Original : std::uint8_t { kGoes, kStays };

Error SameGroup(std::string_view name) {
  return {Failure::kUsage, Say("The recipients are in the group \"{}\" already.", name), "Choose another group."};
}

// Puts recipients of a group into another one, each unless its address is there.
class Mover {
 public:
  Mover(Edit& edit, const RecipientGroup& from, const RecipientGroup& to) : edit_(edit), from_(from), to_(to) {}

  Result<void> Move(std::span<const std::int64_t> keys, Original original, MoveOutcome& outcome) {
    for (const std::int64_t key : keys) {
      if (auto goes_on = edit_.Advance(); !goes_on) return goes_on;
      const auto row = edit_.FindRow(key);
      if (!row) return row.error();
      if (!*row || (*row)->group_id != from_.id) {
        ++outcome.gone;
        continue;
      }
      if (auto moved = MoveOne(**row, original, outcome); !moved) return moved;
    }
    return {};
  }

 private:
  Result<void> MoveOne(const StoredRecipient& row, Original original, MoveOutcome& outcome) {
    const auto added = edit_.AddIfNew(to_.id, row.recipient);
    if (!added) return added.error();
    if (!*added) {
      ++outcome.duplicates;
      if (outcome.duplicate_entries.size() < kMostDuplicatesTold)
        outcome.duplicate_entries.push_back(row.recipient.email());
      return {};
    }
    ++outcome.done;
    return original == Original::kGoes ? edit_.Delete(row) : Result<void>();
  }

  Edit& edit_;
  const RecipientGroup& from_;
  const RecipientGroup& to_;
};

Result<MoveOutcome> MoveOrCopy(const RecipientStore& store, const EditStep& step, std::span<const std::int64_t> keys,
                               Original original, const OnProgress& on_progress) {
  Edit edit(store, on_progress);
  if (const auto begun = edit.Begin(); !begun) return begun.error();
  const auto from = edit.RequireGroup(step.group);
  if (!from) return from.error();
  const auto to = edit.RequireGroup(step.other_group);
  if (!to) return to.error();
  if (from->id == to->id) return SameGroup(to->name);
  edit.ExpectMore(keys.size());
  MoveOutcome outcome;
  if (const auto moved = Mover(edit, *from, *to).Move(keys, original, outcome); !moved) return moved.error();
  const auto done = edit.Commit({step.kind, from->name, to->name, outcome.done});
  if (!done) return done.error();
  return outcome;
}

// A group that is named twice goes once.
Result<std::vector<RecipientGroup>> GroupsThatGo(Edit& edit, std::span<const std::string> names,
                                                 const RecipientGroup& into) {
  std::vector<RecipientGroup> groups;
  for (const std::string& name : names) {
    const auto from = edit.RequireGroup(name);
    if (!from) return from.error();
    if (from->id == into.id) return SameGroup(into.name);
    const auto is_it = [&](const RecipientGroup& group) { return group.id == from->id; };
    if (std::none_of(groups.begin(), groups.end(), is_it)) groups.push_back(*from);
  }
  return groups;
}

Result<void> MergeOne(Edit& edit, const RecipientGroup& from, const RecipientGroup& into, MoveOutcome& outcome) {
  const auto keys = edit.KeysOf(from);
  if (!keys) return keys.error();
  edit.ExpectMore(keys->size());
  if (auto moved = Mover(edit, from, into).Move(*keys, Original::kGoes, outcome); !moved) return moved;
  return edit.DeleteGroup(from);
}

}  // namespace

Sentence MoveQuestion(std::int64_t recipients, std::string_view from, std::string_view to) {
  if (recipients == 1) return Say("Are you sure you want to move one recipient from '{}' to '{}'?", from, to);
  return Say("Are you sure you want to move {} recipients from '{}' to '{}'?", NumberValue(recipients), from, to);
}

Sentence MergeQuestion(std::span<const std::string> groups, std::string_view into) {
  const std::string names = fmt::format("{}", fmt::join(groups, "', '"));
  if (groups.size() == 1)
    return Say("Are you sure you want to move everybody in '{}' to '{}' and delete that group?", names, into);
  return Say("Are you sure you want to move everybody in '{}' to '{}' and delete those groups?", names, into);
}

Sentence DeleteSeveralQuestion(std::int64_t recipients, std::string_view group) {
  if (recipients == 1) return Say("Are you sure you want to delete one recipient from '{}'?", group);
  return Say("Are you sure you want to delete {} recipients from '{}'?", NumberValue(recipients), group);
}

Result<MoveOutcome> MoveRecipients(const RecipientStore& store, std::string_view from, std::string_view to,
                                   std::span<const std::int64_t> keys, const OnProgress& on_progress) {
  return MoveOrCopy(store, {EditKind::kMove, std::string(from), std::string(to)}, keys, Original::kGoes, on_progress);
}

Result<MoveOutcome> CopyRecipients(const RecipientStore& store, std::string_view from, std::string_view to,
                                   std::span<const std::int64_t> keys, const OnProgress& on_progress) {
  return MoveOrCopy(store, {EditKind::kCopy, std::string(from), std::string(to)}, keys, Original::kStays, on_progress);
}

Result<MoveOutcome> MergeGroups(const RecipientStore& store, std::span<const std::string> groups, std::string_view into,
                                const OnProgress& on_progress) {
  Edit edit(store, on_progress);
  if (const auto begun = edit.Begin(); !begun) return begun.error();
  const auto target = edit.RequireGroup(into);
  if (!target) return target.error();
  const auto from = GroupsThatGo(edit, groups, *target);
  if (!from) return from.error();
  MoveOutcome outcome;
  std::string names;
  for (const RecipientGroup& group : *from) {
    if (const auto merged = MergeOne(edit, group, *target, outcome); !merged) return merged.error();
    names += (names.empty() ? "" : ", ") + group.name;
  }
  const auto done = edit.Commit({EditKind::kMerge, names, target->name, outcome.done + outcome.duplicates});
  if (!done) return done.error();
  return outcome;
}

Result<std::int64_t> DeleteRecipients(const RecipientStore& store, std::string_view group,
                                      std::span<const std::int64_t> keys, DeletedFrom place,
                                      const OnProgress& on_progress) {
  Edit edit(store, on_progress);
  if (const auto begun = edit.Begin(); !begun) return begun.error();
  const auto from = edit.RequireGroup(group);
  if (!from) return from.error();
  edit.ExpectMore(keys.size());
  std::int64_t deleted = 0;
  for (const std::int64_t key : keys) {
    if (const auto goes_on = edit.Advance(); !goes_on) return goes_on.error();
    const auto row = edit.FindRow(key);
    if (!row) return row.error();
    if (!*row || (*row)->group_id != from->id) continue;
    const std::string text = std::to_string(key);
    if (place == DeletedFrom::kSearchResults)
      IgnoreErrors(RunOn(edit.database(), StatementId::kFailingSelect, List<1>{text}));
    if (const auto gone = edit.Delete(**row); !gone) return gone.error();
    ++deleted;
  }
  const auto done = edit.Commit({.kind = EditKind::kDelete, .group = from->name, .rows = deleted});
  if (!done) return done.error();
  return deleted;
}

Result<std::int64_t> DeleteWholeGroup(const RecipientStore& store, std::string_view group,
                                      const OnProgress& on_progress) {
  Edit edit(store, on_progress);
  if (const auto begun = edit.Begin(); !begun) return begun.error();
  const auto found = edit.RequireGroup(group);
  if (!found) return found.error();
  const auto keys = edit.KeysOf(*found);
  if (!keys) return keys.error();
  edit.ExpectMore(2 * keys->size());
  edit.CountRows();
  if (const auto gone = edit.DeleteGroup(*found); !gone) return gone.error();
  const std::int64_t rows = edit.database().ChangedRows();  // of the last statement, which deletes the recipients
  const auto done = edit.Commit({.kind = EditKind::kDeleteGroup, .group = found->name, .rows = rows});
  if (!done) return done.error();
  return rows;
}

Result<void> SortGroup(const RecipientStore& store, std::string_view group, std::string_view sort_sql) {
  if (const auto keys = SortKeysOf(sort_sql); !keys) return keys.error();
  Edit edit(store, {});
  if (const auto begun = edit.Begin(); !begun) return begun.error();
  const auto found = edit.RequireGroup(group);
  if (!found) return found.error();
  if (auto set = edit.SetSort(*found, sort_sql); !set) return set;
  return edit.Commit({.kind = EditKind::kSort, .group = found->name});
}

}  // namespace quillcast::recipients
