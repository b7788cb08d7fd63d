#include "recipients/sort_order.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/text.h"
#include "recipients/recipient.h"

namespace quillcast::recipients {
namespace {

Error NotASort(std::string_view sort_sql) {
  return {Failure::kBadData, Say("\"{}\" is no list of columns to sort by.", platform::Printable(sort_sql, 200)),
          "Name columns as in \"[G-LastName], [G-FirstName] DESC\"."};
}

// The column of a name with or without brackets; empty when it is none.
std::string_view SortColumn(std::string_view name) {
  if (name.size() > 2 && name.front() == '[' && name.back() == ']') name = name.substr(1, name.size() - 2);
  for (const std::string_view key : {std::string_view("ID"), std::string_view("G-ID")}) {
    if (platform::EqualsIgnoringAsciiCase(key, name)) return key;
  }
  for (const FieldNames& field : kFields) {
    if (platform::EqualsIgnoringAsciiCase(field.column, name)) return field.column;
  }
  return {};
}

}  // namespace

Result<std::vector<SortKey>> SortKeysOf(std::string_view sort_sql) {
  std::vector<SortKey> keys;
  if (sort_sql.empty()) return keys;
  for (const std::string_view raw : platform::Split(sort_sql, ',')) {
    const std::string_view item = platform::Trim(raw);
    const auto end = item.find_first_of(" \t");
    const std::string_view column = SortColumn(item.substr(0, end));
    const std::string direction =
        platform::AsciiUpper(end == std::string_view::npos ? "ASC" : platform::Trim(item.substr(end)));
    if (column.empty() || (direction != "ASC" && direction != "DESC")) return NotASort(sort_sql);
    // The first says it all: behind it a column decides nothing any more.
    const bool is_new =
        std::none_of(keys.begin(), keys.end(), [&](const SortKey& key) { return key.column == column; });
    if (is_new) keys.push_back({column, direction == "DESC"});
  }
  return keys;
}

std::vector<SortKey> WithoutRepeats(std::span<const SortKey> keys) {
  std::vector<SortKey> kept;
  for (const SortKey& key : keys) {
    const bool is_there =
        std::any_of(kept.begin(), kept.end(), [&](const SortKey& other) { return other.column == key.column; });
    if (!is_there) kept.push_back(key);
  }
  return kept;
}

bool IsSameSort(std::string_view a, std::string_view b) {
  const auto keys = SortKeysOf(a);
  const auto others = SortKeysOf(b);
  return keys && others && *keys == *others;
}

std::string SortTextOf(std::span<const SortKey> keys) {
  std::string text;
  for (const SortKey& key : keys) {
    text += fmt::format("{}[{}]{}", text.empty() ? "" : ", ", key.column, key.descending ? " DESC" : "");
  }
  return text;
}

Result<std::string> OrderByOf(std::string_view sort_sql) {
  const auto keys = SortKeysOf(sort_sql);
  if (!keys) return keys.error();
  std::string order(" ORDER BY ");
  for (const SortKey& key : *keys) order += fmt::format("[{}] {}, ", key.column, key.descending ? "DESC" : "ASC");
  return order + "[ID]";
}

}  // namespace quillcast::recipients
