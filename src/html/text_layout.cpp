#include "html/text_layout.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quillcast::html {
namespace {

// They bound how much longer than its source a text becomes.
constexpr std::size_t kDrawnLevels = 12;
constexpr std::size_t kMostPrefixColumns = 28;
constexpr std::size_t kMostLineEnds = 3;  // two blank lines
constexpr std::size_t kMostPreformattedLineEnds = 50;
constexpr std::size_t kTabColumns = 4;

// Characters that are no ordinary text, and how they are set.
enum class Special : std::uint8_t {
  kBlank,      // a no-break space, and the spaces of a given width
  kInvisible,  // what senders pad hidden previews with: soft hyphen, zero-width space, byte order mark and the like
  kJoiner,     // of emoji and of Arabic script; without a meaning at the start of a word
};
struct SpecialRow {
  std::string_view first;
  std::string_view last;  // differs in its last byte alone
  Special special;
};
constexpr SpecialRow kSpecials[] = {
    {"\u00A0", "\u00A0", Special::kBlank},     {"\u00AD", "\u00AD", Special::kInvisible},
    {"\u034F", "\u034F", Special::kInvisible}, {"\u2000", "\u200A", Special::kBlank},
    {"\u200B", "\u200B", Special::kInvisible}, {"\u200C", "\u200D", Special::kJoiner},
    {"\u202F", "\u202F", Special::kBlank},     {"\u205F", "\u205F", Special::kBlank},
    {"\u2060", "\u2060", Special::kInvisible}, {"\uFEFF", "\uFEFF", Special::kInvisible},
};

bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f'; }
bool IsControl(char c) { return static_cast<std::uint8_t>(c) < 0x20 || c == 0x7F; }

// What the bytes begin that may begin something else than ordinary text.
constexpr auto kOrdinary = [] {
  std::array<bool, 256> ordinary{};
  for (std::size_t byte = 0x21; byte < ordinary.size(); ++byte) ordinary[byte] = byte != 0x7F;
  for (const SpecialRow& row : kSpecials) ordinary[static_cast<std::uint8_t>(row.first.front())] = false;
  return ordinary;
}();
bool IsOrdinary(char c) { return kOrdinary[static_cast<std::uint8_t>(c)]; }

const SpecialRow* FindSpecial(std::string_view text) {
  for (const SpecialRow& row : kSpecials) {
    const std::string_view given = text.substr(0, row.first.size());
    if (given >= row.first && given <= row.last) return &row;
  }
  return nullptr;
}

// How many bytes at the start are to be shown as they stand, single blanks between words included.
std::size_t VisibleRun(std::string_view text, bool may_join) {
  std::size_t run = 0;
  for (; run < text.size(); ++run) {
    if (IsOrdinary(text[run])) continue;
    if (text[run] == ' ' && run > 0 && run + 1 < text.size() && IsOrdinary(text[run + 1])) continue;
    if (text[run] == ' ' || IsControl(text[run])) break;
    const SpecialRow* const special = FindSpecial(text.substr(run));
    if (special != nullptr && (special->special != Special::kJoiner || (run == 0 && !may_join))) break;
  }
  return run;
}

}  // namespace

void TextLayout::AddText(std::string_view text) {
  while (!text.empty()) {
    const std::size_t run = VisibleRun(text, !NothingToJoin());
    if (run > 0) Put(text.substr(0, run));
    text.remove_prefix(run);
    if (text.empty()) break;
    const SpecialRow* const special = FindSpecial(text);
    if (special != nullptr && special->special == Special::kBlank) ++blanks_;
    if (IsSpace(text.front())) collapsible_ = true;
    text.remove_prefix(special == nullptr ? 1 : special->first.size());
  }
}

void TextLayout::AddPreformatted(std::string_view text) {
  while (!text.empty()) {
    const std::size_t run = VisibleRun(text, !NothingToJoin());
    if (run > 0) Put(text.substr(0, run));
    text.remove_prefix(run);
    if (text.empty()) break;
    const SpecialRow* const special = FindSpecial(text);
    if (text.front() == '\n') {
      breaks_ = std::min(breaks_ + 1, kMostPreformattedLineEnds);
      blanks_ = 0;
    } else if (text.front() == '\t') {
      blanks_ += kTabColumns;
    } else if (text.front() == ' ' || (special != nullptr && special->special == Special::kBlank)) {
      ++blanks_;
    }
    literal_ = true;
    collapsible_ = false;
    text.remove_prefix(special == nullptr ? 1 : special->first.size());
  }
}

void TextLayout::Break() {
  breaks_ = std::max(breaks_, std::min(breaks_ + 1, kMostLineEnds));
  blanks_ = 0;
}

void TextLayout::Block(Margin margin) {
  if (held_) return;
  block_ = std::max<std::size_t>(block_, margin == Margin::kBlankLine ? 2 : 1);
  blanks_ = 0;
}

void TextLayout::CellGap() {
  breaks_ = block_ = 0;
  blanks_ = 2;
}

void TextLayout::PushPrefix(std::string first, std::string rest) {
  const std::size_t width = prefix_width_ + first.size();
  if (depth_ == prefixes_.size() && depth_ < kDrawnLevels && width <= kMostPrefixColumns) {
    prefix_width_ = width;
    prefixes_.push_back({std::move(first), std::move(rest)});
  }
  ++depth_;
}

void TextLayout::PopPrefix() {
  --depth_;
  if (depth_ < prefixes_.size()) {
    prefix_width_ -= prefixes_.back().first.size();
    prefixes_.pop_back();
  }
  blank_depth_ = std::min(blank_depth_, prefixes_.size());
}

void TextLayout::Put(std::string_view visible) {
  if (at_line_start()) BeginLine();
  out_.append(std::max<std::size_t>(blanks_, collapsible_ ? 1 : 0), ' ');
  out_ += visible;
  blanks_ = 0;
  collapsible_ = literal_ = held_ = false;
}

void TextLayout::BeginLine() {
  const std::size_t line_ends = line_number_ == 0 ? 0 : std::max(breaks_, block_);
  for (std::size_t i = 0; i < line_ends; ++i) {
    EndLine();
    if (i + 1 == line_ends) break;
    for (std::size_t level = 0; level < blank_depth_; ++level) out_ += prefixes_[level].rest;
  }
  for (Prefix& prefix : prefixes_) {
    out_ += prefix.used ? prefix.rest : prefix.first;
    prefix.used = true;
  }
  ++line_number_;
  breaks_ = block_ = 0;
  blank_depth_ = prefixes_.size();
  if (!literal_) blanks_ = 0;
  collapsible_ = false;
}

void TextLayout::EndLine() {
  // A blank line may hold the blanks of its prefix.
  std::size_t end = out_.size();
  while (end > 0 && out_[end - 1] == ' ') --end;
  out_.resize(end);
  out_ += '\n';
}

std::string TextLayout::Finish() && {
  if (line_number_ > 0) EndLine();
  return std::move(out_);
}

}  // namespace quillcast::html
