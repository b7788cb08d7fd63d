// A body that travels as it stands, compiled for a run: lines without merge tags are wrapped and put into the character
// set once, those with tags for each recipient.
#pragma once

#include <string>
#include <vector>

#include "document/merge_pieces.h"
#include "message/body_style.h"
#include "message/rendered_pieces.h"
#include "message/wire_text.h"

namespace quillcast::message {

// For kNone and for messages without MIME. What it renders keeps views of it.
class MergedLines {
 public:
  // Neither argument is needed afterwards.
  MergedLines(const document::MergePieces& source, const BodyStyle& style);

  // The body for these values, for which one pass holds, and what there is to know about its lines.
  WireText Render(const document::MergeValues& values, RenderedPieces& out) const;
  // The same for a text that was merged whole.
  WireText RenderMerged(std::string_view text, RenderedPieces& out) const;

 private:
  // Lines that are the same for all, or (with pieces) a stretch of lines in which values stand.
  struct Stretch {
    std::string bytes;
    WireText look;
    std::vector<document::MergePiece> pieces;
  };

  void Begin(WireText& look, RenderedPieces& out) const;
  void AddFixed(std::string_view text);
  void AddPersonal(std::vector<document::MergePiece>& pieces);
  void Append(std::string_view text, WireText& look, RenderedPieces& out) const;

  BodyStyle style_;
  std::vector<Stretch> stretches_;
};

}  // namespace quillcast::message
