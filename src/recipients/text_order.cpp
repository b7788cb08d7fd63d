#include "recipients/text_order.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <unordered_map>
#include <vector>

#include "platform/utf8.h"

namespace quillcast::recipients {
namespace {

struct FoldRange {
  char32_t first;
  char32_t last;
  int stride;
  int added;
};

constexpr FoldRange kFoldRanges[] = {
#include "recipients/case_fold_table.inc"
};

constexpr char32_t kBehindUnicode = 0x110000;

constexpr std::array<std::uint8_t, 128> kAsciiFold = [] {
  std::array<std::uint8_t, 128> fold{};
  for (std::size_t c = 0; c < fold.size(); ++c) fold[c] = static_cast<std::uint8_t>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return fold;
}();

// After more of them for each character of a text, trying one place after the other is given up.
constexpr std::size_t kStepsOfACharacter = 4;
constexpr std::size_t kStepsOfAShortText = 1000;

bool IsAsciiByte(char c) { return static_cast<std::uint8_t>(c) < 0x80; }
std::uint8_t FoldAscii(char c) { return kAsciiFold[static_cast<std::uint8_t>(c)]; }

char32_t Fold(char32_t code) {
  const auto* range = std::upper_bound(std::begin(kFoldRanges), std::end(kFoldRanges), code,
                                       [](char32_t value, const FoldRange& row) { return value < row.first; });
  if (range == std::begin(kFoldRanges)) return code;
  --range;
  const bool inside = code <= range->last && (code - range->first) % static_cast<char32_t>(range->stride) == 0;
  return inside ? static_cast<char32_t>(static_cast<int>(code) + range->added) : code;
}

// Takes one folded code point off the front of a text that is not empty.
char32_t TakeFolded(std::string_view& text) {
  if (IsAsciiByte(text[0])) {
    const char32_t code = FoldAscii(text[0]);
    text.remove_prefix(1);
    return code;
  }
  const auto [code, length] = platform::DecodeUtf8(text);
  const char32_t folded = code == platform::kNotUtf8 ? kBehindUnicode + static_cast<std::uint8_t>(text[0]) : Fold(code);
  text.remove_prefix(length);
  return folded;
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

// Goes over what cannot begin the rest of a pattern, as far as that can be told by single bytes: a few characters
// beyond ASCII fold to one of ASCII.
void SkipWhatCannotFit(std::string_view pattern, std::string_view& text) {
  if (pattern.empty() || pattern[0] == '%' || pattern[0] == '_' || !IsAsciiByte(pattern[0])) return;
  const std::uint8_t wanted = FoldAscii(pattern[0]);
  std::size_t at = 0;
  while (at < text.size() && IsAsciiByte(text[at]) && FoldAscii(text[at]) != wanted) ++at;
  text.remove_prefix(at);
}

std::u32string Folded(std::string_view text) {
  std::u32string folded;
  folded.reserve(text.size());
  while (!text.empty()) folded += TakeFolded(text);
  return folded;
}

bool FitsAt(std::u32string_view piece, std::u32string_view text, std::size_t at) {
  if (at > text.size() || piece.size() > text.size() - at) return false;
  return std::equal(piece.begin(), piece.end(), text.begin() + static_cast<std::ptrdiff_t>(at),
                    [](char32_t wanted, char32_t code) { return wanted == code || wanted == U'_'; });
}

// Goes over a text once, whatever is in it: bit n of the state says that the first n + 1 characters of the piece fit
// the last ones that were seen ("shift-and").
class PieceSearch {
 public:
  explicit PieceSearch(std::u32string_view piece) : size_(piece.size()), any_(size_ / kBits + 1) {
    for (std::size_t at = 0; at < size_; ++at) {
      if (piece[at] == U'_') any_[at / kBits] |= std::uint64_t{1} << (at % kBits);
    }
    for (std::size_t at = 0; at < size_; ++at) {
      auto& places = places_.try_emplace(piece[at], any_).first->second;
      places[at / kBits] |= std::uint64_t{1} << (at % kBits);
    }
  }
  // Where the piece ends that begins first, at or behind `from`; npos where it is nowhere.
  std::size_t EndIn(std::u32string_view text, std::size_t from) const {
    if (size_ == 0) return from;
    std::vector<std::uint64_t> state(any_.size());
    for (std::size_t at = from; at < text.size(); ++at) {
      const auto found = places_.find(text[at]);
      const auto& places = found == places_.end() ? any_ : found->second;
      std::uint64_t carried = 1;
      for (std::size_t word = 0; word < state.size(); ++word) {
        const std::uint64_t next = state[word] >> (kBits - 1);
        state[word] = (state[word] << 1 | carried) & places[word];
        carried = next;
      }
      if ((state[(size_ - 1) / kBits] >> ((size_ - 1) % kBits) & 1) != 0) return at + 1;
    }
    return std::u32string_view::npos;
  }

 private:
  static constexpr std::size_t kBits = 64;

  std::size_t size_;
  std::vector<std::uint64_t> any_;  // the places in the piece where each character fits
  std::unordered_map<char32_t, std::vector<std::uint64_t>> places_;
};

// Of a pattern with a "%" in it, piece by piece: each where it first fits, but for the last, which ends the text.
bool LikeByPieces(std::u32string_view pattern, std::u32string_view text) {
  const auto first = pattern.substr(0, pattern.find(U'%'));
  const auto last = pattern.substr(pattern.rfind(U'%') + 1);
  if (first.size() + last.size() > text.size() || !FitsAt(first, text, 0)) return false;
  if (!FitsAt(last, text, text.size() - last.size())) return false;
  std::size_t at = first.size();
  text.remove_suffix(last.size());
  pattern.remove_prefix(first.size() + 1);
  for (auto run = pattern.find(U'%'); run != std::u32string_view::npos; run = pattern.find(U'%')) {
    at = PieceSearch(pattern.substr(0, run)).EndIn(text, at);
    if (at == std::u32string_view::npos) return false;
    pattern.remove_prefix(run + 1);
  }
  return true;
}

}  // namespace

int CompareText(std::string_view a, std::string_view b) {
  a = WithoutTrailingBlanks(a);
  b = WithoutTrailingBlanks(b);
  const std::size_t both = std::min(a.size(), b.size());
  std::size_t at = 0;
  for (; at < both && IsAsciiByte(a[at]) && IsAsciiByte(b[at]); ++at) {
    const int difference = FoldAscii(a[at]) - FoldAscii(b[at]);
    if (difference != 0) return difference;
  }
  a.remove_prefix(at);
  b.remove_prefix(at);
  while (!a.empty() && !b.empty()) {
    const char32_t x = TakeFolded(a);
    const char32_t y = TakeFolded(b);
    if (x != y) return x < y ? -1 : 1;
  }
  return static_cast<int>(!a.empty()) - static_cast<int>(!b.empty());
}

// 0 ends a text, and stands alone for none; 1 goes before 0 where the text is empty, and before an octet below 2.
void AppendSortOctets(std::string& out, const std::optional<std::string_view>& text) {
  constexpr char kEnd = 0;
  constexpr char kEscape = 1;
  if (text) {
    std::string_view rest = WithoutTrailingBlanks(*text);
    if (rest.empty()) out += kEscape;
    while (!rest.empty()) {
      const char32_t code = TakeFolded(rest);
      if (code < 2) {
        out += {kEscape, static_cast<char>(code + 1)};
      } else if (code < 0x80) {
        out += static_cast<char>(code);
      } else if (code < kBehindUnicode) {
        platform::AppendUtf8(out, code);
      } else {
        out += {static_cast<char>(0xFF), static_cast<char>(code - kBehindUnicode)};
      }
    }
  }
  out += kEnd;
}

std::uint64_t HashText(std::string_view text) {
  constexpr std::uint64_t kOffset = 0xCBF29CE484222325;
  constexpr std::uint64_t kPrime = 0x100000001B3;
  constexpr std::uint64_t kMix = 0x9E3779B97F4A7C15;
  text = WithoutTrailingBlanks(text);
  std::uint64_t hash = kOffset;
  std::size_t at = 0;
  for (; at < text.size() && IsAsciiByte(text[at]); ++at) hash = (hash ^ FoldAscii(text[at])) * kPrime;
  text.remove_prefix(at);
  while (!text.empty()) hash = (hash ^ TakeFolded(text)) * kPrime;
  hash ^= hash >> 32;  // the low bits of such a product depend on few bits of the text
  hash *= kMix;
  return hash ^ (hash >> 29);
}

bool BeginsWith(std::string_view text, std::string_view beginning) {
  while (!beginning.empty()) {
    if (text.empty() || TakeFolded(text) != TakeFolded(beginning)) return false;
  }
  return true;
}

bool LikeText(std::string_view pattern, std::string_view text) {
  // After a "%" the shortest run is tried first. Only the last "%" can be wrong about its run, so one place to go back
  // to is enough.
  bool seen_run = false;
  std::string_view pattern_after_run;
  std::string_view text_after_run;
  const std::string_view whole_pattern = pattern;
  const std::string_view whole_text = text;
  std::size_t steps = kStepsOfAShortText + kStepsOfACharacter * text.size();
  while (!text.empty()) {
    if (--steps == 0) return LikeByPieces(Folded(whole_pattern), Folded(whole_text));
    if (!pattern.empty() && pattern[0] == '%') {
      pattern.remove_prefix(1);
      if (pattern.empty()) return true;
      seen_run = true;
      SkipWhatCannotFit(pattern, text);
      pattern_after_run = pattern;
      text_after_run = text;
      continue;
    }
    std::string_view rest = text;
    const char32_t code = TakeFolded(rest);
    if (!pattern.empty()) {
      std::string_view pattern_rest = pattern;
      const char32_t wanted = TakeFolded(pattern_rest);
      if (wanted == code || wanted == U'_') {
        pattern = pattern_rest;
        text = rest;
        continue;
      }
    }
    if (!seen_run) return false;
    TakeFolded(text_after_run);
    SkipWhatCannotFit(pattern_after_run, text_after_run);
    text = text_after_run;
    pattern = pattern_after_run;
  }
  while (!pattern.empty() && pattern[0] == '%') pattern.remove_prefix(1);
  return pattern.empty();
}

}  // namespace quillcast::recipients
