// What a grid of recipients is asked for beside its rows: the row that somebody types the beginning of, and text to
// copy.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "recipients/recipient.h"
#include "recipients/recipient_store.h"

namespace quillcast::recipients {

// The place in `keys` of the next row whose first name, last name or address begins so, in any case; from `from` on,
// and then from the first. Reads row after row, so that a near one is found at once; nothing where there is none.
Result<std::optional<std::size_t>> NextBeginningWith(const RecipientStore& store, std::span<const std::int64_t> keys,
                                                     std::size_t from, std::string_view typed);

// The columns of a grid: the running number, then first name, last name and address. The sort text of a view of the
// group by one of them, which nobody stores; by the first it is the group's own.
std::string ViewSort(const RecipientGroup& group, int column, bool descending);

// A line for each row, its first name, last name and address parted by tabs; tabs and line ends within are blanks.
std::string AsText(std::span<const GridRow> rows);

}  // namespace quillcast::recipients
