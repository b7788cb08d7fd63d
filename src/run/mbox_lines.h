// A message as it stands in a mailbox file: lines that end in LF, and "From " at their beginnings quoted.
#pragma once

#include <string>
#include <string_view>

namespace quillcast::run {

// Takes a message in pieces that are cut anywhere. Its line ends are CRLF; a CR anywhere else is none of its own
// either.
class MboxLines {
 public:
  // What of the piece can be written by now is put behind `out`.
  void Append(std::string_view piece, std::string& out);
  // What is left, and the empty line that follows each message.
  void End(std::string& out);

 private:
  void AppendAtBeginning(std::string_view& piece, std::string& out);

  bool at_beginning_ = true;  // of a line, whose first bytes may be a quoted "From "
  std::string held_;          // of that line
};

}  // namespace quillcast::run
