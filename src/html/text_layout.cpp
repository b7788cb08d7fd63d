#include "html/text_layout.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "html/characters.h"
#include "html/line_wrap.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::html {
namespace {

// They bound how much longer than its source a text becomes.
constexpr std::size_t kDrawnLevels = 12;
constexpr std::size_t kMostPrefixColumns = 28;
constexpr std::size_t kMostLineEnds = 3;  // two blank lines
constexpr std::size_t kMostPreformattedLineEnds = 50;
constexpr std::size_t kBlanksOfTab = 4;
constexpr std::string_view kNoBreakSpace = "\u00A0";
constexpr std::size_t kFewestColumns = 24;  // are left beside prefixes, however narrow the text

// Characters that are no ordinary text, and how they are set.
enum class Special : std::uint8_t {
  kBlank,      // a space of a given width
  kNoBreak,    // one that no line ends at
  kInvisible,  // what senders pad hidden previews with: soft hyphen, zero-width space, byte order mark and the like
  kJoiner,     // of emoji and of Arabic script; without a meaning at the start of a word
};
struct SpecialRow {
  std::string_view first;
  std::string_view last;  // differs in its last byte alone
  Special special;
};
constexpr SpecialRow kSpecials[] = {
    {"\u00A0", "\u00A0", Special::kNoBreak},   {"\u00AD", "\u00AD", Special::kInvisible},
    {"\u034F", "\u034F", Special::kInvisible}, {"\u2000", "\u200A", Special::kBlank},
    {"\u200B", "\u200B", Special::kInvisible}, {"\u200C", "\u200D", Special::kJoiner},
    {"\u202F", "\u202F", Special::kNoBreak},   {"\u205F", "\u205F", Special::kBlank},
    {"\u2060", "\u2060", Special::kInvisible}, {"\uFEFF", "\uFEFF", Special::kInvisible},
};

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

// What would read as a part of the word before it.
bool BeginsWord(std::string_view text) {
  if (text.front() == '<' || text.front() == '$') return true;
  const char32_t code = platform::DecodeUtf8(text).code;
  return code != platform::kNotUtf8 && u_isalnum(static_cast<UChar32>(code));
}

bool IsBlank(const SpecialRow* special) {
  return special != nullptr && (special->special == Special::kBlank || special->special == Special::kNoBreak);
}

// In display columns.
std::size_t LongestLine(std::string_view text) {
  std::size_t longest = 0;
  for (const auto line : platform::Split(text, '\n')) {
    std::size_t columns = 0;
    for (std::size_t at = 0; at < line.size();) {
      const auto [code, length] = platform::DecodeUtf8(line.substr(at));
      columns += DisplayColumns(code);
      at += length;
    }
    longest = std::max(longest, columns);
  }
  return longest;
}

bool OpensWord(char c) { return std::string_view("([{<\"'/-").find(c) != std::string_view::npos; }

}  // namespace

void TextLayout::AddText(std::string_view text) {
  while (!text.empty()) {
    const std::size_t run = VisibleRun(text, !NothingToJoin());
    if (run > 0) Put(text.substr(0, run));
    text.remove_prefix(run);
    if (text.empty()) break;
    const SpecialRow* const special = FindSpecial(text);
    if (IsBlank(special)) ++blanks_, no_break_ = special->special == Special::kNoBreak;
    if (IsSpace(text.front())) collapsible_ = true;
    text.remove_prefix(special == nullptr ? 1 : special->first.size());
  }
}

void TextLayout::AddPreformatted(std::string_view text) {
  while (!text.empty()) {
    const std::size_t run = VisibleRun(text, !NothingToJoin());
    if (run > 0) Put(text.substr(0, run)), is_preformatted_ = true;
    text.remove_prefix(run);
    if (text.empty()) break;
    const SpecialRow* const special = FindSpecial(text);
    if (text.front() == '\n') {
      breaks_ = std::min(breaks_ + 1, kMostPreformattedLineEnds);
      blanks_ = 0;
    } else if (text.front() == '\t') {
      blanks_ += kBlanksOfTab;
    } else if (text.front() == ' ' || IsBlank(special)) {
      ++blanks_;
    }
    literal_ = true;
    collapsible_ = false;
    text.remove_prefix(special == nullptr ? 1 : special->first.size());
  }
}

void TextLayout::Break() {
  if (held_) return;
  if (block_ == 1 && breaks_ == 0) breaks_ = 1;
  breaks_ = std::max(breaks_, std::min(breaks_ + 1, kMostLineEnds));
  blanks_ = 0;
}

void TextLayout::EndFiller() {
  if (blanks_ > 0 && block_ == 1 && breaks_ == 0) Break();
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

void TextLayout::AppendToLine(std::string_view utf8) {
  out_ += utf8;
  shown_ += utf8.size();
}

bool TextLayout::ends_with_digit() const { return !NothingToJoin() && out_.back() >= '0' && out_.back() <= '9'; }

void TextLayout::SetLineApart() {
  if (gap_ != 1 || !line_rest_.empty()) return;
  out_.insert(line_begin_, 1, '\n');
  ++line_begin_;
  ++content_begin_;
  gap_ = 2;
}

void TextLayout::Put(std::string_view visible) {
  if (word_ended_ && !NothingToJoin() && !OpensWord(out_.back()) && BeginsWord(visible)) collapsible_ = true;
  if (at_line_start()) BeginLine();
  const bool no_break = no_break_ && blanks_ == 1 && !collapsible_ && !literal_;
  if (no_break) {
    out_ += kNoBreakSpace;
  } else {
    out_.append(std::max<std::size_t>(blanks_, collapsible_ ? 1 : 0), ' ');
  }
  out_ += visible;
  shown_ += visible.size();
  blanks_ = 0;
  has_no_break_ |= no_break;
  collapsible_ = literal_ = held_ = word_ended_ = no_break_ = false;
}

void TextLayout::BeginLine() {
  const std::size_t line_ends = line_number_ == 0 ? 0 : std::max(breaks_, block_);
  for (std::size_t i = 0; i < line_ends; ++i) {
    EndLine();
    if (i + 1 == line_ends) break;
    for (std::size_t level = 0; level < blank_depth_; ++level) out_ += prefixes_[level].rest;
  }
  gap_ = line_ends;
  line_begin_ = out_.size();
  line_rest_.clear();
  for (Prefix& prefix : prefixes_) {
    out_ += prefix.used ? prefix.rest : prefix.first;
    line_rest_ += prefix.rest;
    prefix.used = true;
  }
  content_begin_ = out_.size();
  is_preformatted_ = false;
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
  if (!is_preformatted_) WrapLine();
  ReleaseNoBreaks();
  out_ += '\n';
  content_begin_ = out_.size();
}

void TextLayout::WrapLine() {
  const std::size_t prefix = content_begin_ - std::min(content_begin_, line_begin_);
  const std::size_t width = std::max(columns_ - std::min(columns_, prefix), kFewestColumns);
  const std::string_view line = std::string_view(out_).substr(content_begin_);
  if (line.size() <= width) return;  // a column is a byte or more
  std::string wrapped = WrapText(line, width, LongWords::kKept);
  // Some editors write nothing else between words: a line that would be too long breaks there all the same.
  if (has_no_break_ && LongestLine(wrapped) > width) {
    wrapped = WrapText(platform::ReplaceAll(line, kNoBreakSpace, " "), width, LongWords::kKept);
  }
  out_.resize(content_begin_);
  out_ += platform::ReplaceAll(wrapped, "\n", '\n' + line_rest_);
}

// They have done their work once the line is wrapped, and read as blanks; where it was wrapped behind one, as nothing.
void TextLayout::ReleaseNoBreaks() {
  if (!has_no_break_) return;
  has_no_break_ = false;
  std::string line = platform::ReplaceAll(std::string_view(out_).substr(content_begin_), "\u00A0\n", "\n");
  line = platform::ReplaceAll(line, kNoBreakSpace, " ");
  out_.resize(content_begin_);
  out_ += line;
}

std::string TextLayout::Finish() && {
  if (line_number_ > 0) EndLine();
  return std::move(out_);
}

}  // namespace quillcast::html
