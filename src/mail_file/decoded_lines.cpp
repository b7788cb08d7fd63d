#include "mail_file/decoded_lines.h"

namespace quillcast::mail_file {

PartSource DecodedLines::SourceOf(ByteRange lines, Unpacking unpacking) const {
  return {.bytes = source_.bytes,
          .encoding = source_.encoding,
          .unpacking = unpacking,
          .piece = lines,
          .from = remembered_};
}

Result<bool> DecodedLines::Fill() {
  points_.push_back(std::make_shared<const DecodingPoint>(reader_.point()));
  const auto block = reader_.Next();
  if (!block) return block.error();
  buffer_ += *block;
  return !block->empty();
}

// Finds the end of the line at at_, which is that of the text where none comes. Of a line that is too long to be held
// its beginning goes into long_text_.
Result<bool> DecodedLines::FindEnd(std::size_t& end) {
  std::size_t looked_at = at_;
  for (;;) {
    end = buffer_.find('\n', looked_at);
    if (end != std::string::npos) return true;
    if (buffer_.size() - at_ > kLongestLineText) {
      if (long_text_.empty()) long_text_ = buffer_.substr(at_, kLongestLineText);
      offset_ += buffer_.size();
      buffer_.clear();
      at_ = 0;
    }
    looked_at = buffer_.size();
    const auto more = Fill();
    if (!more) return more.error();
    if (*more) continue;
    end = buffer_.size();
    return !long_text_.empty() || at_ < end;
  }
}

Result<bool> DecodedLines::Next(MessageLine& line) {
  if (is_repeated_) {
    is_repeated_ = false;
    line = last_;
    return true;
  }
  if (at_ > kLongestLineText) {  // not for each line
    offset_ += at_;
    buffer_.erase(0, at_);
    at_ = 0;
  }
  long_text_.clear();
  line.begin = offset_ + at_;
  while (points_.size() > 1 && points_[1]->decoded <= line.begin) points_.pop_front();
  std::size_t end = 0;
  auto found = FindEnd(end);
  if (!found || !*found) return found;
  const bool is_ended = end < buffer_.size();
  line.text = long_text_.empty() ? std::string_view(buffer_).substr(at_, end - at_) : std::string_view(long_text_);
  line.end = offset_ + end;
  at_ = is_ended ? end + 1 : end;
  line.next = offset_ + at_;
  if (is_ended && long_text_.empty() && line.text.ends_with('\r')) line.text.remove_suffix(1);
  line.text = line.text.substr(0, kLongestLineText);
  last_ = line;
  return true;
}

}  // namespace quillcast::mail_file
