#include "recipients/grid_rows.h"

#include <algorithm>
#include <array>

#include "recipients/sort_order.h"
#include "recipients/text_order.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kSmallestBlock = kKeysAtOnce;
constexpr std::size_t kLargestBlock = 100 * kKeysAtOnce;

// Among some keys. Blocks grow, for each takes a connection.
Result<std::optional<std::size_t>> FirstBeginningWith(const RecipientStore& store, std::span<const std::int64_t> keys,
                                                      std::string_view typed, std::int64_t group_id) {
  std::size_t block = kSmallestBlock;
  for (std::size_t at = 0; at < keys.size(); at += block, block = std::min(block * 4, kLargestBlock)) {
    const auto rows = store.RowsOfKeys(keys.subspan(at, std::min(block, keys.size() - at)), group_id);
    if (!rows) return rows.error();
    const auto found = std::find_if(rows->begin(), rows->end(), [typed](const GridRow& row) {
      return row.id != 0 &&
             (BeginsWith(row.first_name, typed) || BeginsWith(row.last_name, typed) || BeginsWith(row.email, typed));
    });
    if (found != rows->end()) return std::optional(at + static_cast<std::size_t>(found - rows->begin()));
  }
  return std::optional<std::size_t>();
}

std::string ViewSort(const RecipientGroup& group, ViewOrder order) {
  constexpr std::array kColumns = {kFirstName, kLastName, kEmail};
  if (order.column < 1 || order.column > static_cast<int>(kColumns.size())) return group.sort_sql;
  const SortKey key{kFields[kColumns.at(static_cast<std::size_t>(order.column) - 1)].column, order.descends};
  return SortTextOf(std::span(&key, 1));
}

using Keys = std::span<const std::int64_t>;

// The nearest key to `row` that is left: itself, one below it, or one above it. 0 where none is.
std::int64_t NearestLeft(Keys before, std::size_t row, Keys now) {
  std::vector<std::int64_t> left(now.begin(), now.end());
  std::sort(left.begin(), left.end());
  const auto is_left = [&left](std::int64_t key) { return std::binary_search(left.begin(), left.end(), key); };
  const Keys above = before.first(row);
  const Keys below = before.subspan(row);
  if (const auto found = std::find_if(below.begin(), below.end(), is_left); found != below.end()) return *found;
  const auto found = std::find_if(above.rbegin(), above.rend(), is_left);
  return found == above.rend() ? 0 : *found;
}

std::size_t RowAfterwards(Keys before, std::size_t row, Keys now) {
  if (row >= before.size() || now.empty()) return 0;
  auto found = std::find(now.begin(), now.end(), before[row]);
  if (found == now.end()) found = std::find(now.begin(), now.end(), NearestLeft(before, row, now));
  return found == now.end() ? 0 : static_cast<std::size_t>(found - now.begin());
}

std::string OnOneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
  return text;
}

}  // namespace

Result<std::optional<std::size_t>> NextBeginningWith(const RecipientStore& store, std::span<const std::int64_t> keys,
                                                     std::size_t from, std::string_view typed, std::int64_t group_id) {
  from = std::min(from, keys.size());
  auto below = FirstBeginningWith(store, keys.subspan(from), typed, group_id);
  if (!below) return below;
  if (*below) return std::optional(from + **below);
  return FirstBeginningWith(store, keys.first(from), typed, group_id);
}

Result<std::optional<GroupView>> ViewGroup(const RecipientStore& store, std::string_view group, ViewOrder order,
                                           const OnProgress& on_read) {
  const auto found = store.FindAnyGroup(group);
  if (!found) return found.error();
  if (!*found) return std::optional<GroupView>();
  const std::string sort = ViewSort(**found, order);
  if (!SortKeysOf(sort)) {
    const auto count = store.CountRecipients(group);
    if (!count) return count.error();
    return std::optional(
        GroupView{.group_id = (*found)->id, .keys = {}, .count = *count, .is_order_understood = false});
  }
  auto keys = store.ListKeys((*found)->id, sort, on_read);
  if (!keys) return keys.error();
  const auto count = static_cast<std::int64_t>(keys->size());
  return std::optional(GroupView{(*found)->id, std::move(*keys), count});
}

ListPlace PlaceAfterwards(Keys before, const ListPlace& place, Keys now) {
  ListPlace after{RowAfterwards(before, place.current, now), 0, place.height};
  const bool is_on_screen = place.current >= place.top && place.current < place.top + place.height;
  const std::size_t above = is_on_screen ? place.current - place.top : 0;
  after.top = is_on_screen ? after.current - std::min(above, after.current) : RowAfterwards(before, place.top, now);
  return after;
}

std::string AsText(std::span<const GridRow> rows) {
  std::string text;
  for (const GridRow& row : rows) {
    text += OnOneLine(row.first_name) + "\t" + OnOneLine(row.last_name) + "\t" + OnOneLine(row.email) + "\n";
  }
  return text;
}

}  // namespace quillcast::recipients
