#include "smtp/mailbox/content_scanner.h"

#include <cstring>

namespace quillcast::smtp {
namespace {

const char* Find(const char* begin, std::size_t size, char wanted) {
  return static_cast<const char*>(std::memchr(begin, wanted, size));
}

}  // namespace

LineFault ContentScanner::Fault() const {
  if (bare_lf_) return LineFault::kBareLf;
  if (bare_cr_ || at_ == At::kCr) return LineFault::kBareCr;
  return too_long_ ? LineFault::kTooLong : LineFault::kNone;
}

ContentScanner::Step ContentScanner::Advance(std::string_view bytes, std::size_t i) {
  const char c = bytes[i];
  switch (at_) {
    case At::kLineStart:
      line_length_ = 0;
      if (c == '.' && framing_ == Framing::kDot) {
        at_ = At::kDot;
        return {i + 1, true};
      }
      at_ = At::kInLine;
      return {i, false};
    case At::kDot:
      if (c == '\r') {
        at_ = At::kDotCr;
        return {i + 1, true};
      }
      at_ = At::kInLine;  // the dot was put there for transparency and is not content
      return {i, true};
    case At::kDotCr:
      if (c == '\n') {
        ended_ = true;
        at_ = At::kLineStart;
        return {i + 1, true};
      }
      bare_cr_ = true;
      give_back_cr_ = true;
      line_length_ = 1;
      at_ = At::kInLine;
      return {i, true};
    case At::kCr:
      if (c != '\n') {
        bare_cr_ = true;
        at_ = At::kInLine;
        return {i, false};
      }
      if (++line_length_ > kLongestLine) too_long_ = true;
      at_ = At::kLineStart;
      return {i + 1, false};
    case At::kInLine:
      break;
  }
  return {ToLineEnd(bytes, i), false};
}

// Leaves the position behind the next CR, or at the end of the bytes.
std::size_t ContentScanner::ToLineEnd(std::string_view bytes, std::size_t i) {
  const char* begin = bytes.data() + i;
  const char* cr = Find(begin, bytes.size() - i, '\r');
  const std::size_t length = cr != nullptr ? static_cast<std::size_t>(cr - begin) : bytes.size() - i;
  if (!bare_lf_ && Find(begin, length, '\n') != nullptr) bare_lf_ = true;
  line_length_ += length;
  if (line_length_ > kLongestLine) too_long_ = true;
  if (cr == nullptr) return bytes.size();
  ++line_length_;
  at_ = At::kCr;
  return i + length + 1;
}

}  // namespace quillcast::smtp
