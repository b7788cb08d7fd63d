#include "message/rendered_pieces.h"

namespace quillcast::message {

void RenderedPieces::Add(const Piece& piece) {
  pieces_.push_back(piece);
  size_ += piece.length;
}

void RenderedPieces::AddShared(std::string_view bytes) {
  if (!bytes.empty()) Add({Kind::kShared, bytes.data(), 0, bytes.size()});
}

void RenderedPieces::EndPersonal() {
  const std::size_t length = personal_.size() - taken_;
  if (length == 0) return;
  Add({Kind::kPersonal, nullptr, taken_, length});
  taken_ = personal_.size();
}

void RenderedPieces::AddFile(std::size_t file, std::uint64_t size) {
  if (size > 0) Add({Kind::kFile, nullptr, file, size});
}

void RenderedPieces::AddFrom(const RenderedPieces& other, std::size_t index) {
  const Piece& piece = other.pieces_[index];
  if (piece.kind != Kind::kPersonal) return Add(piece);
  personal_ += other.At(index);
  EndPersonal();
}

std::size_t RenderedPieces::Reserve() {
  Add({Kind::kShared, "", 0, 0});
  return pieces_.size() - 1;
}

void RenderedPieces::Fill(std::size_t place, std::string_view bytes) {
  Piece& piece = pieces_[place];
  size_ += bytes.size() - piece.length;
  piece.shared = bytes.data();
  piece.length = bytes.size();
}

void RenderedPieces::CutBack(std::size_t count) {
  for (; pieces_.size() > count; pieces_.pop_back()) {
    const Piece& piece = pieces_.back();
    size_ -= piece.length;
    if (piece.kind == Kind::kPersonal) taken_ = piece.at;
  }
  personal_.resize(taken_);
}

std::string_view RenderedPieces::At(std::size_t index) const {
  const Piece& piece = pieces_[index];
  return {piece.kind == Kind::kShared ? piece.shared : personal_.data() + piece.at, piece.length};
}

}  // namespace quillcast::message
