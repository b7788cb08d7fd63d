// Encoders for a body of which some pieces are the same for every recipient: those are encoded once, and only the
// values between them anew.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "message/rendered_pieces.h"

namespace quillcast::message {

// A value goes on in the column where the piece before it ended; a literal begins a line, by a soft line break before
// it. That costs three octets, and no literal is encoded twice.
class QuotedPrintableStream {
 public:
  // Kept by whoever compiles, for as long as anything rendered from it is read.
  struct Literal {
    std::string lines;       // encoded as if it began a line
    std::size_t end_column;  // of the last one
    bool begins_with_break;
  };
  // `is_first` says that it is the beginning of the body.
  static Literal Prepare(std::string_view bytes, bool is_first);

  // A value, or a literal that is not worth preparing; copied into the personal bytes.
  void Add(std::string_view bytes, RenderedPieces& out);
  // `out` keeps a view of `lines`.
  void AddLiteral(const Literal& literal, RenderedPieces& out);
  void Finish(RenderedPieces& out) { out.EndPersonal(); }

 private:
  std::size_t column_ = 0;
};

// Base64 groups of three bytes do not end where a value ends. A literal is therefore encoded from each of its first
// three bytes on; the bytes before the form that fits go into the group that the value before it left open.
class Base64Stream {
 public:
  struct Form {
    std::string lines;  // whole groups, as if they began a line; the last line is open
    std::size_t end_column = 0;
    std::string rest;  // at most two bytes that make no group
  };
  struct Literal {
    std::string start;          // the first two bytes, or all of a literal that is not worth the forms
    std::array<Form, 3> forms;  // from byte 0, 1 and 2 on
    bool has_forms = false;
  };
  static Literal Prepare(std::string_view bytes, bool is_first);

  void Add(std::string_view bytes, RenderedPieces& out);
  void AddLiteral(const Literal& literal, RenderedPieces& out);
  void Finish(RenderedPieces& out);

 private:
  std::size_t column_ = 0;
  std::string open_;  // at most two bytes of a group
};

}  // namespace quillcast::message
