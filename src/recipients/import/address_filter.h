// Tells fast that an address is surely not in a group: a Bloom filter of fixed size over the addresses that are.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "recipients/text_order.h"

namespace quillcast::recipients {

// False answers are exact, true ones mean "maybe": of a million addresses about one in a hundred thousand that are not
// there, of ten million one in twenty-five. Addresses are equal as the store finds them equal.
class AddressFilter {
 public:
  AddressFilter() : words_(kWords) {}

  // Whether an address may have been added before; it is from here on. All its bits lie in one line of the
  // processor's cache, so that the memory is waited for once.
  bool Add(std::string_view address) {
    const std::uint64_t hash = HashText(address);
    std::uint64_t* line = &words_[(hash >> 40) % (kWords / kWordsInLine) * kWordsInLine];
    bool was_there = true;
    std::uint64_t bits = hash;
    for (int i = 0; i < kBitsPerAddress; ++i, bits >>= kBitsOfPlace) {
      const std::uint64_t place = bits % (64 * kWordsInLine);
      const std::uint64_t bit = std::uint64_t{1} << (place % 64);
      was_there = was_there && (line[place / 64] & bit) != 0;
      line[place / 64] |= bit;
    }
    return was_there;
  }

 private:
  static constexpr std::size_t kWords = std::size_t{1} << 20;  // 8 MiB
  static constexpr int kBitsPerAddress = 4;
  static constexpr std::size_t kWordsInLine = 8;
  static constexpr int kBitsOfPlace = 9;

  std::vector<std::uint64_t> words_;
};

}  // namespace quillcast::recipients
