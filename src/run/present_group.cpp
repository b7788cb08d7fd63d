#include "run/present_group.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "run/journal/frozen_rows.h"

namespace quillcast::run {
namespace {

// The rows of one address from `at` on, and where the next begin.
template <typename Rows>
auto EndOfAddress(const Rows& rows, typename Rows::const_iterator at) {
  return std::find_if(at, rows.end(), [&](const auto& row) { return row.first != at->first; });
}

// How many stand in both of two sorted ranges.
template <typename Iterator>
std::int64_t InBoth(Iterator one, Iterator one_end, Iterator other, Iterator other_end) {
  std::int64_t count = 0;
  while (one != one_end && other != other_end) {
    if (*one == *other) {
      ++count, ++one, ++other;
    } else {
      ++(*one < *other ? one : other);
    }
  }
  return count;
}

Result<ListChanges> Compare(RunJournal& journal, MailingId mailing, recipients::RowSource& rows) {
  ListComparison lists;
  const auto then = journal.Visit(mailing, StateSet().set(), 0, [&](const JournalRow& row) -> Result<bool> {
    lists.AddThen(row.recipient);
    return true;
  });
  if (!then) return then.error();
  const auto now = recipients::Walk(rows, {}, nullptr, [&](const recipients::Recipient& row, std::int64_t) {
    lists.AddNow(row);
    return Result<bool>(true);
  });
  if (!now) return now.error();
  return lists.Compare();
}

// The one that has its name by now.
Result<std::optional<PresentGroup>> GroupInItsPlace(const MailingInputs& inputs,
                                                    const recipients::RecipientStore& store) {
  const auto group = store.FindAnyGroup(inputs.group);
  if (!group) return group.error();
  if (!*group) return std::optional<PresentGroup>();
  return std::optional(PresentGroup{0, {}, (*group)->name, true});
}

}  // namespace

void ListComparison::Add(const recipients::Recipient& row, std::vector<Row>& rows) {
  octets_.clear();
  AppendRow(row, octets_);
  const std::hash<std::string_view> hash;
  rows.emplace_back(hash(row.email()), hash(octets_));
}

ListChanges ListComparison::Compare() {
  std::ranges::sort(then_);
  std::ranges::sort(now_);
  ListChanges changes;
  auto then = then_.cbegin();
  auto now = now_.cbegin();
  while (then != then_.cend() || now != now_.cend()) {
    const bool is_then = then != then_.cend() && (now == now_.cend() || then->first <= now->first);
    const bool is_now = now != now_.cend() && (then == then_.cend() || now->first <= then->first);
    const auto then_end = is_then ? EndOfAddress(then_, then) : then;
    const auto now_end = is_now ? EndOfAddress(now_, now) : now;
    const std::int64_t so_many_then = then_end - then;
    const std::int64_t so_many_now = now_end - now;
    changes.gone += std::max<std::int64_t>(so_many_then - so_many_now, 0);
    changes.added += std::max<std::int64_t>(so_many_now - so_many_then, 0);
    changes.changed += std::min(so_many_then, so_many_now) - InBoth(then, then_end, now, now_end);
    then = then_end;
    now = now_end;
  }
  return changes;
}

Result<std::optional<PresentGroup>> LookAtGroup(RunJournal& journal, const MailingEntry& mailing,
                                                const MailingInputs& inputs, const recipients::RecipientStore& store) {
  auto group = inputs.group_id == 0 ? store.FindAnyGroup(inputs.group) : store.FindGroupOfKey(inputs.group_id);
  if (!group) return group.error();
  if (!*group) return GroupInItsPlace(inputs, store);
  const auto count = store.CountRecipients((*group)->name);
  if (!count) return count.error();
  PresentGroup present{*count, {}, (*group)->name};
  if (std::max(*count, mailing.recipients) > kMostCompared) return std::optional(present);
  auto rows = store.ListRecipients((*group)->id, "");
  if (!rows) return rows.error();
  auto changes = Compare(journal, mailing.id, *rows);
  if (!changes) return changes.error();
  if (inputs.range) changes->added = 0;
  present.changes = *changes;
  return std::optional(present);
}

}  // namespace quillcast::run
