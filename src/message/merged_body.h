// A body part compiled for a run: its text cut at the merge tags, everything between them already in its character set
// and transfer encoding.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "document/merge_pieces.h"
#include "message/body_streams.h"
#include "message/body_style.h"
#include "message/merged_lines.h"
#include "message/rendered_pieces.h"

namespace quillcast::message {

// Compiled once. What it renders keeps views of it, so it has to stay where it is for as long.
class MergedBody {
 public:
  // `text` has "\n" line ends; one is added at the end where it is missing.
  MergedBody(std::string text, const BodyStyle& style);

  // Whether the character set holds the text, and the values that it would take up.
  bool CanHold(const document::MergeValues& values) const;

  // Appends the body for these values and says how it came out: as asked, but quoted-printable where kNone was asked
  // for and the text would not come through as it stands. The last line is ended. Nothing, and then nothing of use is
  // appended, when the values make it grow beyond document::kLargestMergedText.
  std::optional<WireForm> Render(const document::MergeValues& values, RenderedPieces& out) const;

  // The text as it was given, its last line ended: which tags stand in it, and whether one pass holds.
  const document::MergePieces& source() const { return source_; }

 private:
  // Encoded literals, and the places of values between them.
  template <typename Stream>
  struct Encoded {
    struct Piece {
      typename Stream::Literal literal;
      int field;
    };
    std::vector<Piece> pieces;
  };
  using QuotedPrintable = Encoded<QuotedPrintableStream>;
  using Base64 = Encoded<Base64Stream>;

  template <typename Stream>
  Encoded<Stream> Compile();
  template <typename Stream>
  void Write(const Encoded<Stream>& encoded, const document::MergeValues& values, const std::string* merged,
             RenderedPieces& out) const;
  WireForm WriteLines(const document::MergeValues& values, const std::string* merged, RenderedPieces& out) const;
  bool NeverFits(const MergedLines& lines) const;

  document::MergePieces source_;
  BodyStyle style_;
  std::variant<QuotedPrintable, Base64, MergedLines> compiled_;
  bool holds_text_ = true;
};

}  // namespace quillcast::message
