#include "recipients/key_sorter.h"

#include <algorithm>
#include <string_view>

#include "recipients/text_order.h"

namespace quillcast::recipients {
namespace {

constexpr std::size_t kWordSize = sizeof(std::uint64_t);

// Of a text that is as if zeros followed it. No text's octets are the beginning of another's, so that is no difference.
std::uint64_t WordAt(std::string_view octets, std::size_t at) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < kWordSize; ++i) {
    word = (word << 8) | (at + i < octets.size() ? static_cast<std::uint8_t>(octets[at + i]) : 0U);
  }
  return word;
}

}  // namespace

bool KeySorter::CanSortBy(std::span<const SortKey> by) {
  return std::none_of(by.begin(), by.end(),
                      [](const SortKey& key) { return key.column == "ID" || key.column == "G-ID"; });
}

void KeySorter::Add(const platform::Statement& row) {
  octets_.clear();
  for (std::size_t at = 0; at < by_.size(); ++at) {
    const int column = static_cast<int>(at) + 1;
    const std::size_t begin = octets_.size();
    AppendSortOctets(octets_, row.IsNull(column) ? std::nullopt : std::optional(row.Text(column)));
    if (!by_[at].descending) continue;
    for (std::size_t i = begin; i < octets_.size(); ++i) octets_[i] = static_cast<char>(~octets_[i]);
  }
  constexpr std::size_t kHead = kWords * kWordSize;
  const std::string_view rest = std::string_view(octets_).substr(std::min(kHead, octets_.size()));
  rows_.push_back({.head = {WordAt(octets_, 0), WordAt(octets_, kWordSize)},
                   .rest = rests_.size(),
                   .rest_size = static_cast<std::uint32_t>(rest.size()),
                   .place = static_cast<std::uint32_t>(rows_.size()),
                   .id = row.Int(0)});
  rests_ += rest;
}

bool KeySorter::IsBefore(const Row& a, const Row& b) const {
  if (a.head != b.head) return a.head < b.head;
  const auto rest = [this](const Row& row) { return std::string_view(rests_).substr(row.rest, row.rest_size); };
  const int order = rest(a).compare(rest(b));
  return order != 0 ? order < 0 : a.place < b.place;
}

std::vector<std::int64_t> KeySorter::Sorted() && {
  std::sort(rows_.begin(), rows_.end(), [this](const Row& a, const Row& b) { return IsBefore(a, b); });
  std::vector<std::int64_t> keys;
  keys.reserve(rows_.size());
  for (const Row& row : rows_) keys.push_back(row.id);
  return keys;
}

}  // namespace quillcast::recipients
