// The lines of a text that is encoded, with their places in what it is decoded to.
#pragma once

#include <deque>
#include <memory>
#include <string>

#include "mail_file/message_lines.h"
#include "mail_file/part_reader.h"

namespace quillcast::mail_file {

class DecodedLines {
 public:
  DecodedLines(std::shared_ptr<const MessageFile> file, const PartSource& source)
      : source_(source), reader_(std::move(file), source) {}

  // As MessageLines does; a line ends with LF.
  Result<bool> Next(MessageLine& line);
  void Back() { is_repeated_ = true; }
  std::uint64_t begin() const { return 0; }  // of the first line
  std::uint64_t position() const { return is_repeated_ ? last_.begin : offset_ + at_; }

  // What follows the line that came last will be asked for: decoding can begin near it.
  void Remember() { remembered_ = points_.front(); }
  // What is made of these lines, the first of which stands behind the place that is remembered.
  PartSource SourceOf(ByteRange lines, Unpacking unpacking) const;

 private:
  Result<bool> Fill();
  Result<bool> FindEnd(std::size_t& end);

  PartSource source_;
  PartReader reader_;
  std::deque<std::shared_ptr<const DecodingPoint>> points_;  // of the blocks from the line that came last on
  std::shared_ptr<const DecodingPoint> remembered_;
  std::string buffer_;
  std::string long_text_;     // the beginning of a line that is not held whole
  std::uint64_t offset_ = 0;  // of the buffer, in decoded bytes
  std::size_t at_ = 0;        // in the buffer
  MessageLine last_;
  bool is_repeated_ = false;
};

}  // namespace quillcast::mail_file
