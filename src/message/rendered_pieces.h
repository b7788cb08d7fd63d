// What a rendered message is made of: views of shared pieces, pieces written for this recipient, and encoded files, in
// order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quillcast::message {

// Personal bytes are appended to one buffer that may move, so they are kept as offsets.
class RenderedPieces {
 public:
  // Keeps its memory, for the next message.
  void Clear() { CutBack(0); }
  // Kept as a view: the bytes must stay where they are.
  void AddShared(std::string_view bytes);
  // Personal bytes are appended to this buffer, then EndPersonal takes what was added since the last piece.
  std::string& personal() { return personal_; }
  void EndPersonal();
  void AddFile(std::size_t file, std::uint64_t size);
  // A piece of the other list, its bytes copied where they are personal.
  void AddFrom(const RenderedPieces& other, std::size_t index);

  // A place for shared bytes that depend on what follows them: a part's header on how the part came out.
  std::size_t Reserve();
  void Fill(std::size_t place, std::string_view bytes);
  // Takes the pieces from `count` on away.
  void CutBack(std::size_t count);

  // Reserved places count; what is empty was never added.
  std::size_t count() const { return pieces_.size(); }
  bool IsFile(std::size_t index) const { return pieces_[index].kind == Kind::kFile; }
  std::size_t FileAt(std::size_t index) const { return pieces_[index].at; }
  std::string_view At(std::size_t index) const;  // of one that is no file
  // Octets, files included.
  std::uint64_t size() const { return size_; }

 private:
  enum class Kind { kShared, kPersonal, kFile };
  struct Piece {
    Kind kind;
    const char* shared;
    std::size_t at;  // where in the personal buffer, or which file
    std::uint64_t length;
  };
  void Add(const Piece& piece);

  std::string personal_;
  std::size_t taken_ = 0;
  std::vector<Piece> pieces_;
  std::uint64_t size_ = 0;
};

}  // namespace quillcast::message
