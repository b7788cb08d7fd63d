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
                                                      std::string_view typed) {
  std::size_t block = kSmallestBlock;
  for (std::size_t at = 0; at < keys.size(); at += block, block = std::min(block * 4, kLargestBlock)) {
    const auto rows = store.RowsOfKeys(keys.subspan(at, std::min(block, keys.size() - at)));
    if (!rows) return rows.error();
    const auto found = std::find_if(rows->begin(), rows->end(), [typed](const GridRow& row) {
      return row.id != 0 &&
             (BeginsWith(row.first_name, typed) || BeginsWith(row.last_name, typed) || BeginsWith(row.email, typed));
    });
    if (found != rows->end()) return std::optional(at + static_cast<std::size_t>(found - rows->begin()));
  }
  return std::optional<std::size_t>();
}

std::string OnOneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
  return text;
}

}  // namespace

Result<std::optional<std::size_t>> NextBeginningWith(const RecipientStore& store, std::span<const std::int64_t> keys,
                                                     std::size_t from, std::string_view typed) {
  from = std::min(from, keys.size());
  auto below = FirstBeginningWith(store, keys.subspan(from), typed);
  if (!below) return below;
  if (*below) return std::optional(from + **below);
  return FirstBeginningWith(store, keys.first(from), typed);
}

std::string ViewSort(const RecipientGroup& group, int column, bool descending) {
  constexpr std::array kColumns = {kFirstName, kLastName, kEmail};
  if (column < 1 || column > static_cast<int>(kColumns.size())) return group.sort_sql;
  const SortKey key{kFields[kColumns.at(static_cast<std::size_t>(column) - 1)].column, descending};
  return SortTextOf(std::span(&key, 1));
}

std::string AsText(std::span<const GridRow> rows) {
  std::string text;
  for (const GridRow& row : rows) {
    text += OnOneLine(row.first_name) + "\t" + OnOneLine(row.last_name) + "\t" + OnOneLine(row.email) + "\n";
  }
  return text;
}

}  // namespace quillcast::recipients
