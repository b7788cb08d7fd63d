// Looks for many phrases in one pass over a text (Aho and Corasick, 1975).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::document {

// Built once, for any number of texts and threads.
class PhraseSearch {
 public:
  // The phrases are different from each other, not empty, and without ASCII capitals.
  explicit PhraseSearch(std::span<const std::string> phrases);

  // For each phrase, whether it occurs anywhere in the text in lower case. ASCII letters are lowered; every other
  // character stands for itself alone. Linear in the text.
  std::vector<bool> Occurring(std::string_view text) const;

 private:
  using State = std::uint32_t;  // what has been read of a phrase; 0 for nothing
  static constexpr std::int32_t kNone = -1;

  std::size_t Cell(State state, unsigned char byte) const { return state * columns_ + column_[byte]; }
  void NumberColumns(std::span<const std::string> phrases);
  State AddState();
  void AddPhrase(std::string_view phrase, std::int32_t number);
  void CompleteTransitions();

  std::array<std::uint8_t, 256> column_{};  // 0 for what is in no phrase
  std::size_t columns_ = 1;
  std::vector<State> next_;         // a row of columns for each state
  std::vector<std::int32_t> ends_;  // the phrase that ends in a state, or kNone
  std::vector<State> also_;         // the state of the longest other phrase that ends here too, or 0
};

}  // namespace quillcast::document
