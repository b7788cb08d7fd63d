// Whether bytes can travel as they stand and come back unchanged from every server and every mailbox.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillcast::message {

// The longest line that may go over the wire, without its line end (RFC 5321 4.5.3.1.6).
inline constexpr std::size_t kLongestLine = 998;

// Looks at a text piece by piece, however it is cut.
class WireText {
 public:
  // The text goes on with these bytes; a line, and a line end, may be cut by a call.
  void Look(std::string_view bytes);

  // Line ends are CRLF, no other CR, LF or NUL; no line is too long, and none begins with "From ", which mailboxes
  // quote. The last line may be open.
  bool Fits() const { return fits_ && !after_return_ && LineFits(length_); }
  bool may_fit() const { return fits_; }  // unless what follows, or nothing, spoils it
  bool lines_fit() const { return lines_fit_ && length_ <= kLongestLine; }
  bool eight_bit() const { return eight_bit_; }

  // Adds what was found in another text that holds whole lines.
  void Add(const WireText& other);

 private:
  bool LineFits(std::size_t length) const;
  void LookInsideLine(std::string_view part);
  void EndLine();

  bool fits_ = true;
  bool lines_fit_ = true;
  bool eight_bit_ = false;
  bool after_return_ = false;
  std::size_t length_ = 0;  // of the line that is open
  std::string start_;       // the first bytes of it
};

}  // namespace quillcast::message
