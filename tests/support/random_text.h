// Random bytes and random cuts for properties that hold on any input. Seeded, so that a failure repeats.
#pragma once

#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::test {

// Up to `longest` characters, each one of the given strings.
inline std::string RandomText(std::mt19937& random, const std::vector<std::string>& alphabet, std::size_t longest) {
  std::string text;
  for (std::size_t i = random() % (longest + 1); i > 0; --i) text += alphabet[random() % alphabet.size()];
  return text;
}

inline std::vector<std::string_view> RandomPieces(std::mt19937& random, std::string_view text) {
  std::vector<std::string_view> pieces;
  while (!text.empty()) {
    const std::size_t size = 1 + random() % std::min<std::size_t>(text.size(), 1 + random() % 100);
    pieces.push_back(text.substr(0, size));
    text.remove_prefix(size);
  }
  return pieces;
}

inline std::vector<std::string> EveryByte() {
  std::vector<std::string> bytes;
  for (int i = 0; i < 256; ++i) bytes.emplace_back(1, static_cast<char>(i));
  return bytes;
}

}  // namespace quillcast::test
