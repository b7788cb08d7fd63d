// The order of a group's list: the sort text that the store keeps for it, and what a person picks to make one.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"

namespace quillcast::recipients {

struct SortKey {
  std::string_view column;  // of a recipient, "ID" or "G-ID"
  bool descending = false;

  bool operator==(const SortKey&) const = default;
};

// The sort text of a group as a statement takes it: columns of a recipient, in brackets or not, each with ASC or DESC
// or neither, separated by commas. None for the empty text; kBadData for anything else.
Result<std::vector<SortKey>> SortKeysOf(std::string_view sort_sql);

// The first of each column: one that comes again decides nothing.
std::vector<SortKey> WithoutRepeats(std::span<const SortKey> keys);

// Whether two texts name the same columns the same way round, however they are written.
bool IsSameSort(std::string_view a, std::string_view b);

// "[G-LastName], [G-FirstName] DESC"; empty, which is the order in which recipients were added, without keys.
std::string SortTextOf(std::span<const SortKey> keys);

// What a statement has behind its condition for a sort text that is not empty; equal rows keep their natural order.
Result<std::string> OrderByOf(std::string_view sort_sql);

}  // namespace quillcast::recipients
