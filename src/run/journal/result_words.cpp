#include "run/journal/result_words.h"

#include <algorithm>
#include <cstdint>

#include "run/journal/varint.h"

namespace quillcast::run {

// First an octet with a bit for each text that is another than before; then of each of those how much of it is the
// same, how many octets follow, and these.
void AppendWords(const ResultWords& before, const ResultWords& words, std::string& row) {
  std::uint8_t others = 0;
  for (std::size_t i = 0; i < words.texts.size(); ++i) {
    if (words.texts[i] != before.texts[i]) others |= 1U << i;
  }
  row += static_cast<char>(others);
  for (std::size_t i = 0; i < words.texts.size(); ++i) {
    if ((others & (1U << i)) == 0) continue;
    const std::string& text = words.texts[i];
    const auto differs = std::ranges::mismatch(text, before.texts[i]).in1;
    const auto same = static_cast<std::size_t>(differs - text.begin());
    AppendVarint(same, row);
    AppendVarint(text.size() - same, row);
    row.append(text, same);
  }
}

bool TakeWords(std::string_view& row, ResultWords& words) {
  if (row.empty()) return false;
  const auto others = static_cast<std::uint8_t>(row.front());
  row.remove_prefix(1);
  for (std::size_t i = 0; i < words.texts.size(); ++i) {
    if ((others & (1U << i)) == 0) continue;
    std::uint64_t same = 0;
    std::uint64_t size = 0;
    if (!TakeVarint(row, same) || !TakeVarint(row, size)) return false;
    if (same > words.texts[i].size() || size > row.size()) return false;
    words.texts[i].resize(same);
    words.texts[i] += row.substr(0, size);
    row.remove_prefix(size);
  }
  return true;
}

}  // namespace quillcast::run
