#include "mime/text_layout.h"

#include <algorithm>
#include <cstdint>

namespace quillcast::mime {
namespace {

constexpr std::size_t kDrawnLevels = 12;
constexpr std::size_t kMostLineEnds = 3;  // two blank lines; preformatted text may have more
constexpr std::size_t kTabColumns = 4;

constexpr std::string_view kNoBreakSpace = "\xC2\xA0";
// Characters without width that senders pad hidden previews with: soft hyphen, zero-width space, word joiner, combining
// grapheme joiner, byte order mark. The joiners of emoji and of Arabic script are not among them.
constexpr std::string_view kInvisible[] = {"\xC2\xAD", "\xE2\x80\x8B", "\xE2\x81\xA0", "\xCD\x8F", "\xEF\xBB\xBF"};

bool IsSpace(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f'; }
bool IsControl(char c) { return static_cast<std::uint8_t>(c) < 0x20 || c == 0x7F; }
bool MayBeSpecial(char c) {
  return c == '\xC2' || c == '\xE2' || c == '\xCD' || c == '\xEF' || c == ' ' || IsControl(c);
}

std::size_t InvisibleLength(std::string_view text) {
  for (const std::string_view mark : kInvisible) {
    if (text.starts_with(mark)) return mark.size();
  }
  return 0;
}

// How many bytes at the start are to be shown as they stand.
std::size_t VisibleRun(std::string_view text) {
  std::size_t run = 0;
  for (; run < text.size(); ++run) {
    if (!MayBeSpecial(text[run])) continue;
    const std::string_view rest = text.substr(run);
    if (rest.front() == ' ' || IsControl(rest.front()) || rest.starts_with(kNoBreakSpace)) break;
    if (InvisibleLength(rest) > 0) break;
  }
  return run;
}

}  // namespace

void TextLayout::AddText(std::string_view text) {
  while (!text.empty()) {
    const std::size_t run = VisibleRun(text);
    if (run > 0) Put(text.substr(0, run));
    text.remove_prefix(run);
    if (text.empty()) break;
    if (IsSpace(text.front())) {
      if (!collapsible_) ++blanks_;
      collapsible_ = true;
      text.remove_prefix(1);
    } else if (text.starts_with(kNoBreakSpace)) {
      ++blanks_;
      collapsible_ = false;
      text.remove_prefix(kNoBreakSpace.size());
    } else {
      text.remove_prefix(IsControl(text.front()) ? 1 : InvisibleLength(text));
    }
  }
}

void TextLayout::AddPreformatted(std::string_view text) {
  while (!text.empty()) {
    const std::size_t run = VisibleRun(text);
    if (run > 0) Put(text.substr(0, run));
    text.remove_prefix(run);
    if (text.empty()) break;
    std::size_t length = std::max<std::size_t>(1, InvisibleLength(text));
    if (text.starts_with(kNoBreakSpace)) length = kNoBreakSpace.size();
    if (text.front() == '\n') {
      ++breaks_;
      blanks_ = 0;
    } else if (text.front() == '\t') {
      blanks_ += kTabColumns;
    } else if (text.front() == ' ' || text.starts_with(kNoBreakSpace)) {
      ++blanks_;
    }
    literal_ = true;
    collapsible_ = false;
    text.remove_prefix(length);
  }
}

void TextLayout::Break() {
  breaks_ = std::min(breaks_ + 1, kMostLineEnds);
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
  collapsible_ = true;
}

void TextLayout::PushPrefix(std::string first, std::string rest) {
  if (depth_ < kDrawnLevels) prefixes_.push_back({std::move(first), std::move(rest)});
  ++depth_;
}

void TextLayout::PopPrefix() {
  --depth_;
  if (depth_ < prefixes_.size()) prefixes_.pop_back();
  blank_depth_ = std::min(blank_depth_, prefixes_.size());
}

void TextLayout::Put(std::string_view visible) {
  if (at_line_start()) BeginLine();
  out_.append(blanks_, ' ');
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

}  // namespace quillcast::mime
