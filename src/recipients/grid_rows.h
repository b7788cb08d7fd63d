// What a grid of recipients asks for: which rows a group has and where somebody is among them, the row that somebody
// types the beginning of, and text to copy.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/recipient.h"
#include "recipients/recipient_store.h"

namespace quillcast::recipients {

// The place in `keys` of the next row whose first name, last name or address begins so, in any case; from `from` on,
// and then from the first. Reads row after row, so that a near one is found at once; nothing where there is none of the
// group.
Result<std::optional<std::size_t>> NextBeginningWith(const RecipientStore& store, std::span<const std::int64_t> keys,
                                                     std::size_t from, std::string_view typed,
                                                     std::int64_t group_id = kAnyGroup);

// The columns of a grid: the running number, then first name, last name and address. A view of the group by one of them
// is stored nowhere; by the first it is in the group's own order.
struct ViewOrder {
  int column = 0;
  bool descends = false;
};

struct GroupView {
  std::int64_t group_id = 0;
  std::vector<std::int64_t> keys;
  std::int64_t count = 0;           // of the group's recipients
  bool is_order_understood = true;  // where the stored order is not, the statement that lists them fails: no keys
};

// Nothing where the group is gone.
Result<std::optional<GroupView>> ViewGroup(const RecipientStore& store, std::string_view group, ViewOrder order,
                                           const OnProgress& on_read = {});

// Where somebody is in a list: the current row, the topmost one on the screen, and how many are on it.
struct ListPlace {
  std::size_t current = 0;
  std::size_t top = 0;
  std::size_t height = 1;

  bool operator==(const ListPlace&) const = default;
};

// The same place once a list of keys was read again. For a row that is gone it is that of the nearest one that is left
// of those that stood below it, or else above it. The current row stays where it is on the screen, if it is on it.
ListPlace PlaceAfterwards(std::span<const std::int64_t> before, const ListPlace& place,
                          std::span<const std::int64_t> now);

// A line for each row, its first name, last name and address parted by tabs; tabs and line ends within are blanks.
std::string AsText(std::span<const GridRow> rows);

}  // namespace quillcast::recipients
