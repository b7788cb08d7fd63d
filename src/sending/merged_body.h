// A body part compiled for a run: its text cut at the merge tags, everything between them already in its character set
// and transfer encoding.
#pragma once

#include <string>
#include <vector>

#include "compose/merge_pieces.h"
#include "mime/charset.h"

namespace quillcast::sending {

// What a rendered body is made of: views of shared pieces and of pieces written for this recipient, in order. Personal
// bytes are appended to one buffer that may move, so they are kept as offsets.
class RenderedPieces {
 public:
  void Clear();
  void AddShared(std::string_view bytes);
  // Personal bytes are appended to this buffer, then EndPersonal takes what was added since the last piece.
  std::string& personal() { return personal_; }
  void EndPersonal();

  std::size_t count() const { return pieces_.size(); }
  std::string_view At(std::size_t index) const;
  std::uint64_t size() const { return size_; }

 private:
  struct Piece {
    const char* shared;  // nullptr for a personal one
    std::size_t offset;
    std::size_t length;
  };
  std::string personal_;
  std::size_t taken_ = 0;
  std::vector<Piece> pieces_;
  std::uint64_t size_ = 0;
};

class MergedBody {
 public:
  // `text` has "\n" line ends; one is added at the end where it is missing. `unmapped` says what becomes of a character
  // that the set lacks.
  MergedBody(std::string text, mime::Charset charset, mime::Unmapped unmapped);

  // Whether the character set holds the text, and the values that it would take up.
  bool CanHold(const compose::MergeValues& values) const;

  // Appends the body for these values, quoted-printable with CRLF line ends. False, with nothing of use appended, when
  // the values make it grow beyond compose::kLargestMergedText.
  bool Render(const compose::MergeValues& values, RenderedPieces& out) const;

  const compose::MergePieces& source() const { return source_; }

 private:
  struct EncodedPiece {
    std::string bytes;       // a literal, encoded as if it began a line
    std::size_t end_column;  // of its last line
    bool begins_with_break;
    int field;  // or the place of a value
  };

  void AppendEncoded(std::string& out, std::string_view text, std::size_t& column) const;

  compose::MergePieces source_;
  mime::Charset charset_;
  mime::Unmapped unmapped_;
  std::vector<EncodedPiece> pieces_;
  bool holds_text_ = true;
};

}  // namespace quillcast::sending
