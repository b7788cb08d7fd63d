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

// Quoted-printable for a file: every byte comes back, CR and LF are encoded too. The last line is not ended.
class QuotedPrintableFileEncoder {
 public:
  void Encode(std::string_view bytes, std::string& out);
  void Finish(std::string& out);

 private:
  std::size_t column_ = 0;
};

// Ends the line without a line break in the content; the column is 0 after it. What is encoded from column 0 on does
// not depend on what stands before.
void AppendSoftBreak(std::string& out, std::size_t& column);

// Malformed escapes are kept as they stand; blanks at line ends are dropped, as the RFC tells readers.
std::string DecodeQuotedPrintable(std::string_view text);

}  // namespace quillcast::mime
