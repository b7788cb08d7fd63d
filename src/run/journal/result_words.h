// What a server said of recipients and what we say of them, in few octets: most differ from the one before in the
// number of a queue alone.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace quillcast::run {

struct ResultWords {
  // The enhanced code, the text of the reply, and our reason.
  std::array<std::string, 3> texts;

  std::string& enhanced() { return texts[0]; }
  std::string& reply() { return texts[1]; }
  std::string& reason() { return texts[2]; }
  bool IsEmpty() const { return texts[0].empty() && texts[1].empty() && texts[2].empty(); }
  bool operator==(const ResultWords&) const = default;
};

// Writes `words` as what differs from `before`, which the reader will know.
void AppendWords(const ResultWords& before, const ResultWords& words, std::string& row);

// Takes the next from the front of a row; `words` is what stood before it, empty for the first. False at the end, and
// where what stands there is none.
bool TakeWords(std::string_view& row, ResultWords& words);

}  // namespace quillcast::run
