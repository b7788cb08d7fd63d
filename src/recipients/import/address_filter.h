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

  void Add(std::string_view address) {
    ForEachBit(address, [this](std::size_t word, std::uint64_t bit) {
      words_[word] |= bit;
      return true;
    });
  }

  bool MayHold(std::string_view address) const {
    return ForEachBit(address, [this](std::size_t word, std::uint64_t bit) { return (words_[word] & bit) != 0; });
  }

 private:
  static constexpr std::size_t kWords = std::size_t{1} << 20;  // 8 MiB
  static constexpr int kBitsPerAddress = 4;

  // Calls `visit` with each bit of an address while it gives true; whether it did to the end. All of them lie in one
  // line of the processor's cache, so that the memory is waited for once.
  template <typename Visit>
  static bool ForEachBit(std::string_view address, Visit visit) {
    const std::uint64_t hash = HashText(address);
    const std::size_t line = (hash >> 40) % (kWords / kWordsInLine) * kWordsInLine;
    std::uint64_t bits = hash;
    for (int i = 0; i < kBitsPerAddress; ++i, bits >>= kBitsOfPlace) {
      const std::uint64_t place = bits % (64 * kWordsInLine);
      if (!visit(line + place / 64, std::uint64_t{1} << (place % 64))) return false;
    }
    return true;
  }

  static constexpr std::size_t kWordsInLine = 8;
  static constexpr int kBitsOfPlace = 9;

  std::vector<std::uint64_t> words_;
};

}  // namespace quillcast::recipients
