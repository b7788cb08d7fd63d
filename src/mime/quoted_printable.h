// Quoted-printable (RFC 2045 6.7), written so that nothing on the way has a reason to touch the body.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillcast::mime {

// Encodes bytes from `column` on and leaves it at the column reached, so that pieces can be encoded one after the
// other. CRLF is a hard line break; a CR or LF alone becomes =0D or =0A, also where a CRLF is cut between two pieces.
// Lines are at most 76 columns. No line starts with "." or "From ", hard or soft, so that neither dot-stuffing nor
// mailbox quoting applies. A blank or tab before CRLF or at the end of a piece is encoded. `at_end` says that nothing
// follows this piece.
void AppendQuotedPrintable(std::string& out, std::string_view bytes, std::size_t& column, bool at_end);

// Ends the line without a line break in the content; the column is 0 after it. What is encoded from column 0 on does
// not depend on what stands before.
void AppendSoftBreak(std::string& out, std::size_t& column);

// Encodes a file, of which every byte comes back: CR and LF are always =0D and =0A, and a soft break follows each LF,
// so that text in it stays readable. The result is the same however the stream is cut. Each line, the last one too, is
// ended by CRLF; that last CRLF is no part of the file but belongs to the boundary delimiter, so "--" follows directly,
// as after Base64LineEncoder. An empty file gives nothing. No line starts with "." or "From ": a "." or "F" there is
// encoded. Lines are at most 76 columns and do not end with a blank.
class QuotedPrintableFileEncoder {
 public:
  // The last blank or tab waits for what follows: it is encoded only at a line's end.
  void Encode(std::string_view bytes, std::string& out);
  // Ends the last line. The encoder is then ready for another file.
  void Finish(std::string& out);

 private:
  std::size_t column_ = 0;
  char held_blank_ = '\0';  // a blank or tab that the file may end in; 0: none
};

// Malformed escapes are kept as they stand; blanks at line ends are dropped, as the RFC tells readers.
std::string DecodeQuotedPrintable(std::string_view text);

}  // namespace quillcast::mime
