#include "mail_file/message_lines.h"

#include <algorithm>
#include <cstring>

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kLinesBlock = 2 * kLongestLineText;

}  // namespace

MessageLines::MessageLines(const MessageFile& file, ByteRange range)
    : file_(file), end_(range.end), offset_(range.begin) {
  buffer_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kLinesBlock, range.size())));
}

// More of the file behind what is still to be read; false where there is none, or no room for it.
Result<bool> MessageLines::Fill() {
  std::memmove(buffer_.data(), buffer_.data() + at_, filled_ - at_);
  offset_ += at_;
  filled_ -= at_;
  at_ = 0;
  const auto wanted =
      static_cast<std::size_t>(std::min<std::uint64_t>(buffer_.size() - filled_, end_ - offset_ - filled_));
  if (wanted == 0) return false;
  const auto count = file_.ReadAt(offset_ + filled_, buffer_.data() + filled_, wanted);
  if (!count) return count.error();
  filled_ += *count;
  if (*count < wanted) end_ = offset_ + filled_;  // it was cut short meanwhile
  return *count > 0;
}

// The beginning of a line that is longer than the buffer is kept, and the rest of it passed over.
Result<bool> MessageLines::SkipLongLine(MessageLine& line) {
  long_text_.assign(buffer_, 0, kLongestLineText);
  line = {long_text_, offset_, 0, 0};
  char before = '\0';
  for (;;) {
    const auto* const end =
        static_cast<const char*>(std::memchr(buffer_.data() + at_, file_.line_end(), filled_ - at_));
    if (end != nullptr) {
      const auto place = static_cast<std::size_t>(end - buffer_.data());
      if (place > at_) before = *(end - 1);
      at_ = place + 1;
      line.next = offset_ + at_;
      line.end = line.next - (before == '\r' && file_.line_end() == '\n' ? 2 : 1);
      return true;
    }
    if (filled_ > at_) before = buffer_[filled_ - 1];
    at_ = filled_;
    const auto more = Fill();
    if (!more) return more.error();
    if (!*more) break;
  }
  line.end = line.next = offset_ + at_;
  return true;
}

Result<bool> MessageLines::Next(MessageLine& line) {
  if (is_repeated_) {
    is_repeated_ = false;
    line = last_;
    return true;
  }
  const char* end = nullptr;
  for (std::size_t looked_at = 0;;) {
    const char* const begin = buffer_.data() + at_;
    end = static_cast<const char*>(std::memchr(begin + looked_at, file_.line_end(), filled_ - at_ - looked_at));
    if (end != nullptr) break;
    looked_at = filled_ - at_;
    const auto more = Fill();
    if (!more) return more.error();
    if (*more) continue;
    if (filled_ == buffer_.size() && offset_ + filled_ < end_) {
      auto skipped = SkipLongLine(line);
      last_ = line;
      return skipped;
    }
    break;
  }
  if (at_ == filled_) return false;
  const std::size_t stop = end == nullptr ? filled_ : static_cast<std::size_t>(end - buffer_.data());
  line.begin = offset_ + at_;
  line.text = std::string_view(buffer_).substr(at_, stop - at_);
  if (end != nullptr && file_.line_end() == '\n' && line.text.ends_with('\r')) line.text.remove_suffix(1);
  line.end = line.begin + line.text.size();
  at_ = end == nullptr ? filled_ : stop + 1;
  line.next = offset_ + at_;
  line.text = line.text.substr(0, kLongestLineText);
  last_ = line;
  return true;
}

}  // namespace quillcast::mail_file
