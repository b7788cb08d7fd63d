// The lines of a message file, of any length, with their places in it.
#pragma once

#include <string>
#include <string_view>

#include "mail_file/message_file.h"
#include "mail_file/part.h"

namespace quillcast::mail_file {

inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";  // that a file may begin with
inline constexpr std::size_t kLongestLineText = std::size_t{128} * 1024;

struct MessageLine {
  std::string_view text;    // without its end; of a longer line the first kLongestLineText bytes; until the next call
  std::uint64_t begin = 0;  // places in the file
  std::uint64_t end = 0;    // where the line's end begins
  std::uint64_t next = 0;   // where the next line begins
};

class MessageLines {
 public:
  // Of that range of the file, which is what reads it and outlives this.
  MessageLines(const MessageFile& file, ByteRange range);

  // False at the end. Fails when the file cannot be read.
  Result<bool> Next(MessageLine& line);
  // The line that came last comes once more.
  void Back() { is_repeated_ = true; }
  // Where the next line begins.
  std::uint64_t position() const { return is_repeated_ ? last_.begin : offset_ + at_; }
  std::uint64_t end() const { return end_; }

 private:
  Result<bool> Fill();
  Result<bool> SkipLongLine(MessageLine& line);

  const MessageFile& file_;
  std::uint64_t end_;
  std::string buffer_;
  std::string long_text_;
  std::uint64_t offset_;    // of the buffer in the file
  std::size_t at_ = 0;      // in the buffer
  std::size_t filled_ = 0;  // bytes of the buffer
  MessageLine last_;
  bool is_repeated_ = false;
};

}  // namespace quillcast::mail_file
