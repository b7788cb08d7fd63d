// Where the next message of a mailbox file begins: behind a blank line stands "From " with an address and a date, and
// then a field; or "From " with something else or nothing, and then two lines of a header, the first of them one that
// programs begin with, or one that is nothing else. What looks like that may lie within a message all the same.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "mail_file/mailbox_line.h"
#include "mail_file/message_lines.h"

namespace quillcast::mail_file {

class MailboxBorder {
 public:
  // The file outlives it. `check` fails when the reading was cancelled.
  MailboxBorder(const MessageFile& file, std::function<Result<void>()> check) : file_(file), check_(std::move(check)) {}

  // Whether the file is a mailbox: it begins as one, behind blank lines, which begin() is behind.
  Result<bool> LookAtBeginning();
  std::uint64_t begin() const { return begin_; }

  // The first header has ended, and says how long what follows it is. Programs that do not quote a line "From " of the
  // content say so. Others have it wrong, with other line ends or from before a change: it counts where it leads to the
  // next message or the end.
  Result<void> HearContentLength(std::string_view length, std::uint64_t content);

  // The header has ended with a blank line.
  void BeginBody() { is_behind_blank_ = true; }
  // Whether a line is the first field of a next message, or seems to be. `content_end` is where the line before it
  // ends.
  bool IsPassedBy(std::string_view line, std::uint64_t content_end);
  // Of the message before it, once it was passed.
  std::uint64_t content_end() const { return content_end_; }
  // Whether that line lies within the message all the same: the multipart of that boundary goes on behind it, so that
  // it is of a message or mailbox that is attached as it is. An empty boundary: none is open.
  Result<bool> IsWithinMessage(const MessageLine& line, std::string_view boundary);

 private:
  const MessageFile& file_;
  std::function<Result<void>()> check_;
  std::uint64_t begin_ = 0;
  bool is_behind_blank_ = false;
  bool is_behind_field_ = false;             // that came first behind a line of the doubtful kind
  MailboxLine behind_ = MailboxLine::kNone;  // what the line before was
  std::uint64_t content_end_ = 0;
  std::uint64_t within_until_ = 0;  // known to be of the first message
};

}  // namespace quillcast::mail_file
