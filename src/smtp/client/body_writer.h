// Turns the pieces of a message into what goes over the wire after DATA or BDAT.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/result.h"
#include "smtp/message_source.h"

namespace quillcast::smtp {

class BodyWriter {
 public:
  // kDots: for DATA, a dot added to each line that begins with one (RFC 5321 4.5.2), and CRLF.CRLF at the end.
  // kBare: for DATA, the message is known to have no such line. kCounted: for BDAT, the octets and nothing else.
  enum class Form { kDots, kBare, kCounted };

  // A message that does not have `size` octets, as it was composed, is ended in no form; 0 where nobody knows, which
  // kCounted does not allow.
  BodyWriter(MessageSource& source, Form form, std::uint64_t size) : source_(&source), form_(form), size_(size) {}

  // Appends to `out` until it holds `enough` bytes, or a few more, or the message has ended. Fails when a piece cannot
  // be had, or the count is not kept; the connection is then of no more use, for the message cannot be ended.
  Result<void> Fill(std::string& out, std::size_t enough);
  bool ended() const { return ended_; }
  // Octets of the message that were appended.
  std::uint64_t taken() const { return taken_; }

 private:
  void Stuff(std::string_view piece, std::string& out);
  Result<bool> HasRest();
  Result<void> End(std::string& out);

  MessageSource* source_;
  Form form_;
  std::uint64_t size_;
  std::uint64_t taken_ = 0;
  std::string_view rest_;  // of the last piece
  bool at_line_start_ = true;
  bool after_cr_ = false;
  bool ended_ = false;
};

}  // namespace quillcast::smtp
