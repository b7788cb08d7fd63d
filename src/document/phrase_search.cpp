#include "document/phrase_search.h"

#include "platform/text.h"

namespace quillcast::document {

PhraseSearch::PhraseSearch(std::span<const std::string> phrases) {
  NumberColumns(phrases);
  AddState();
  for (std::size_t i = 0; i < phrases.size(); ++i) AddPhrase(phrases[i], static_cast<std::int32_t>(i));
  CompleteTransitions();
}

void PhraseSearch::NumberColumns(std::span<const std::string> phrases) {
  for (const auto& phrase : phrases) {
    for (const char c : phrase) {
      auto& column = column_[static_cast<unsigned char>(c)];
      if (column == 0) column = static_cast<std::uint8_t>(columns_++);
    }
  }
  for (unsigned char c = 'A'; c <= 'Z'; ++c) {
    column_[c] = column_[static_cast<unsigned char>(platform::AsciiLower(static_cast<char>(c)))];
  }
}

PhraseSearch::State PhraseSearch::AddState() {
  next_.resize(next_.size() + columns_, 0);
  also_.push_back(0);
  ends_.push_back(kNone);
  return static_cast<State>(ends_.size() - 1);
}

void PhraseSearch::AddPhrase(std::string_view phrase, std::int32_t number) {
  State state = 0;
  for (const char c : phrase) {
    const std::size_t cell = Cell(state, static_cast<unsigned char>(c));
    if (next_[cell] == 0) {
      const State added = AddState();
      next_[cell] = added;
    }
    state = next_[cell];
  }
  ends_[state] = number;
}

// Breadth first, so that the longest proper suffix of a state, which is shorter, is complete before the state is.
void PhraseSearch::CompleteTransitions() {
  std::vector<State> order = {0};
  std::vector<State> suffix(ends_.size(), 0);
  for (std::size_t at = 0; at < order.size(); ++at) {
    const State state = order[at];
    also_[state] = ends_[suffix[state]] != kNone ? suffix[state] : also_[suffix[state]];
    for (std::size_t column = 1; column < columns_; ++column) {
      State& next = next_[state * columns_ + column];
      const State elsewhere = state == 0 ? 0 : next_[suffix[state] * columns_ + column];
      if (next == 0) {
        next = elsewhere;
      } else {
        suffix[next] = elsewhere;
        order.push_back(next);
      }
    }
  }
}

std::vector<bool> PhraseSearch::Occurring(std::string_view text) const {
  std::vector<bool> occurring(ends_.size(), false);
  State state = 0;
  for (const char c : text) {
    state = next_[Cell(state, static_cast<unsigned char>(c))];
    if (ends_[state] == kNone && also_[state] == 0) continue;
    for (State end = state; end != 0; end = also_[end]) {
      if (ends_[end] != kNone) occurring[static_cast<std::size_t>(ends_[end])] = true;
    }
  }
  return occurring;
}

}  // namespace quillcast::document
