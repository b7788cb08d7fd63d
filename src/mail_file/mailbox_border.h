// Where the next message of a mailbox file begins: behind a blank line stands "From " with an address and a time, and
// then fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quillcast::mail_file {

// "From ada@example.org Sat Nov 14 22:40:05 2026".
bool IsMailboxLine(std::string_view line);

class MailboxBorder {
 public:
  // The header has ended with a blank line.
  void BeginBody() { is_behind_blank_ = true; }
  // Whether a line is the first field of a next message. `content_end` is where the line before it ends.
  bool IsPassedBy(std::string_view line, std::uint64_t content_end);
  // Of the message before it, once it was passed.
  std::uint64_t content_end() const { return content_end_; }

 private:
  bool is_behind_blank_ = false;
  bool is_behind_from_ = false;
  std::uint64_t content_end_ = 0;
};

}  // namespace quillcast::mail_file
