#include "recipients/edit/capitalise_group.h"

#include "recipients/edit/capitalise.h"
#include "recipients/store_connection.h"
#include "recipients/store_rows.h"

namespace quillcast::recipients {
namespace {

Recipient Capitalised(Recipient recipient) {
  recipient.values[kFirstName] = Capitalise(recipient.values[kFirstName], NamePart::kFirst);
  recipient.values[kLastName] = Capitalise(recipient.values[kLastName], NamePart::kLast);
  return recipient;
}

}  // namespace

Result<void> PreviewCapitals(const RecipientStore& store, std::string_view group,
                             const std::function<bool(const NameChange&)>& visit) {
  auto database = OpenStore(store.file(), store.patience());
  if (!database) return database.error();
  const auto found = RequireGroupToChangeOn(*database, group);
  if (!found) return found.error();
  const auto keys = ReadKeys(*database, found->id, {});
  if (!keys) return keys.error();
  return store.VisitByKey(*keys, [&](const StoredRecipient& row) {
    const Recipient after = Capitalised(row.recipient);
    for (const std::size_t field : {kFirstName, kLastName}) {
      const std::string& before = row.recipient.values[field];
      if (before == after.values[field]) continue;
      if (!visit({row.id, row.recipient.email(), field, before, after.values[field]})) return false;
    }
    return true;
  });
}

Sentence CapitaliseQuestion(std::int64_t recipients, std::string_view group) {
  if (recipients == 1) return Say("Are you sure you want to change the name of one recipient in '{}'?", group);
  return Say("Are you sure you want to change the names of {} recipients in '{}'?", NumberValue(recipients), group);
}

Result<std::int64_t> CapitaliseGroup(const RecipientStore& store, std::string_view group,
                                     const OnProgress& on_progress) {
  Edit edit(store, on_progress);
  if (const auto begun = edit.Begin(); !begun) return begun.error();
  const auto found = edit.RequireGroup(group);
  if (!found) return found.error();
  const auto keys = edit.KeysOf(*found);
  if (!keys) return keys.error();
  edit.ExpectMore(keys->size());
  std::int64_t changed = 0;
  for (const std::int64_t key : *keys) {
    if (const auto goes_on = edit.Advance(); !goes_on) return goes_on.error();
    const auto row = edit.FindRow(key);
    if (!row) return row.error();
    if (!*row) continue;
    const Recipient after = Capitalised((*row)->recipient);
    if (after == (*row)->recipient) continue;
    if (const auto done = edit.Update(**row, after); !done) return done.error();
    ++changed;
  }
  const auto done = edit.Commit({.kind = EditKind::kCapitalise, .group = found->name, .rows = changed});
  if (!done) return done.error();
  return changed;
}

}  // namespace quillcast::recipients
