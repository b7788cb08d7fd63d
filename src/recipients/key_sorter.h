// Puts the keys of a group's recipients in the order of its sort text. The store's engine does the same, and takes ten
// times as long for a million: it asks for each comparison anew how two texts fold.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/sqlite.h"
#include "recipients/sort_order.h"

namespace quillcast::recipients {

// Some forty octets a recipient, and what its columns hold beyond the first sixteen.
class KeySorter {
 public:
  // By columns of text, so by neither of the two keys.
  explicit KeySorter(std::span<const SortKey> by) : by_(by) {}
  static bool CanSortBy(std::span<const SortKey> by);

  // A row of the key and the columns in their order.
  void Add(const platform::Statement& row);
  // Equal ones in the order of adding.
  std::vector<std::int64_t> Sorted() &&;

 private:
  static constexpr std::size_t kWords = 2;
  struct Row {
    std::array<std::uint64_t, kWords> head;  // the first octets, the first of them counting most
    std::size_t rest;                        // where the others begin
    std::uint32_t rest_size;
    std::uint32_t place;
    std::int64_t id;
  };
  bool IsBefore(const Row& a, const Row& b) const;

  std::span<const SortKey> by_;
  std::vector<Row> rows_;
  std::string rests_;
  std::string octets_;  // of the row that is being added
};

}  // namespace quillcast::recipients
