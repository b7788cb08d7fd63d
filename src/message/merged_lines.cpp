#include "message/merged_lines.h"

#include <utility>

namespace quillcast::message {

// HTML is wrapped whole: where a line of it may be broken depends on the tag or the element that it stands in.
MergedLines::MergedLines(const document::MergePieces& source, const BodyStyle& style) : style_(style) {
  std::string fixed;
  std::vector<document::MergePiece> open;  // the line in which a value stands, up to its end
  if (style.is_html && style.wrap > 0 && source.HasTags()) {
    open = source.pieces();
    AddPersonal(open);
    return;
  }
  for (const auto& piece : source.pieces()) {
    if (piece.field >= 0) {
      if (open.empty()) {
        const std::size_t line = fixed.rfind('\n') + 1;  // 0 where there is none
        if (line < fixed.size()) open.push_back({.literal = fixed.substr(line)});
        AddFixed(std::string_view(fixed).substr(0, line));
        fixed.clear();
      }
      open.push_back(piece);
      continue;
    }
    std::string_view literal = piece.literal;
    if (!open.empty()) {
      const auto line = literal.substr(0, literal.find('\n'));
      const bool ends = line.size() < literal.size();
      open.push_back({.literal = std::string(literal.substr(0, line.size() + (ends ? 1 : 0)))});
      if (!ends) continue;
      literal.remove_prefix(line.size() + 1);
      AddPersonal(open);
    }
    fixed += literal;
  }
  if (!open.empty()) AddPersonal(open);
  AddFixed(fixed);
}

void MergedLines::AddFixed(std::string_view text) {
  if (text.empty()) return;
  Stretch stretch;
  if (stretches_.empty()) stretch.bytes = style_.start;
  stretch.bytes += style_.AsItStands(text);
  stretch.look.Look(stretch.bytes);
  stretches_.push_back(std::move(stretch));
}

void MergedLines::AddPersonal(std::vector<document::MergePiece>& pieces) {
  stretches_.push_back({.bytes = {}, .look = {}, .pieces = std::exchange(pieces, {})});
}

void MergedLines::Begin(WireText& look, RenderedPieces& out) const {
  look.Look(style_.start);
  out.personal() += style_.start;
}

WireText MergedLines::Render(const document::MergeValues& values, RenderedPieces& out) const {
  WireText look;
  if (!stretches_.front().pieces.empty()) Begin(look, out);
  std::string text;
  for (const Stretch& stretch : stretches_) {
    if (stretch.pieces.empty()) {
      out.EndPersonal();
      out.AddShared(stretch.bytes);
      look.Add(stretch.look);
      continue;
    }
    text.clear();
    for (const auto& piece : stretch.pieces) {
      text += piece.field >= 0 ? values[static_cast<std::size_t>(piece.field)] : std::string_view(piece.literal);
    }
    Append(text, look, out);
  }
  out.EndPersonal();
  return look;
}

WireText MergedLines::RenderMerged(std::string_view text, RenderedPieces& out) const {
  WireText look;
  Begin(look, out);
  Append(text, look, out);
  out.EndPersonal();
  return look;
}

void MergedLines::Append(std::string_view text, WireText& look, RenderedPieces& out) const {
  const std::string bytes = style_.AsItStands(text);
  look.Look(bytes);
  out.personal() += bytes;
}

}  // namespace quillcast::message
