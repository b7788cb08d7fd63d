#include "smtp/sasl/md4.h"

#include <openssl/crypto.h>

#include <array>
#include <bit>

namespace quillcast::smtp {
namespace {

using Words = std::array<std::uint32_t, 16>;
using State = std::array<std::uint32_t, 4>;

constexpr std::size_t kBlock = 64;

// One of the three rounds (RFC 1320 3.4): the function, its constant, the order of the words and the four rotations.
struct Round {
  std::uint32_t (*mix)(std::uint32_t x, std::uint32_t y, std::uint32_t z);
  std::uint32_t constant;
  std::array<std::uint8_t, 16> order;
  std::array<int, 4> rotations;
};
constexpr std::array kRounds{
    Round{[](std::uint32_t x, std::uint32_t y, std::uint32_t z) { return (x & y) | (~x & z); },
          0,
          {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
          {3, 7, 11, 19}},
    Round{[](std::uint32_t x, std::uint32_t y, std::uint32_t z) { return (x & y) | (x & z) | (y & z); },
          0x5A827999,
          {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15},
          {3, 5, 9, 13}},
    Round{[](std::uint32_t x, std::uint32_t y, std::uint32_t z) { return x ^ y ^ z; },
          0x6ED9EBA1,
          {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15},
          {3, 9, 11, 15}},
};

Words WordsOf(std::string_view block) {
  Words words{};
  for (std::size_t n = 0; n < kBlock; ++n) {
    words[n / 4] |= std::uint32_t{static_cast<unsigned char>(block[n])} << (8 * (n % 4));
  }
  return words;
}

// The registers change their places after each step, so that the one at the front is always the next to change.
void Digest(State& state, std::string_view block) {
  Words words = WordsOf(block);
  State at = state;
  for (const Round& round : kRounds) {
    for (std::size_t step = 0; step < words.size(); ++step) {
      const std::uint32_t sum = at[0] + round.mix(at[1], at[2], at[3]) + words[round.order[step]] + round.constant;
      at = {at[3], std::rotl(sum, round.rotations[step % 4]), at[1], at[2]};
    }
  }
  for (std::size_t n = 0; n < state.size(); ++n) state[n] += at[n];
  OPENSSL_cleanse(words.data(), sizeof words);
  OPENSSL_cleanse(at.data(), sizeof at);
}

}  // namespace

platform::Secret Md4(std::string_view octets) {
  const std::size_t padding = kBlock - (octets.size() + 8) % kBlock;  // at least one octet
  std::string text;
  text.reserve(octets.size() + padding + 8);
  text.append(octets).append(1, '\x80').append(padding - 1, '\0');
  AppendLittleEndian(text, std::uint64_t{octets.size()} * 8, 8);

  State state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  for (std::size_t at = 0; at < text.size(); at += kBlock) Digest(state, std::string_view(text).substr(at, kBlock));
  platform::Wipe(text);
  std::string digest;
  digest.reserve(16);  // no copy is left by growing
  for (const std::uint32_t word : state) AppendLittleEndian(digest, word, 4);
  OPENSSL_cleanse(state.data(), sizeof state);
  return platform::Secret(std::move(digest));
}

}  // namespace quillcast::smtp
