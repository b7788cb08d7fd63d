#include "smtp/client/reply_reader.h"

#include <fmt/format.h>

#include <algorithm>

namespace quillcast::smtp {
namespace {

constexpr std::size_t kShownOfOdd = 200;  // octets

std::size_t LimitOf(std::string_view line) {
  return line.starts_with("334") ? ReplyReader::kLongestChallenge : ReplyReader::kLongestLine;
}

std::string TooLong(std::string_view line) {
  return fmt::format("a line of its reply is longer than {} octets", LimitOf(line));
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Takes one to three digits off the front; false when there are none, or more.
bool TakeNumber(std::string_view& text) {
  std::size_t count = 0;
  while (count < text.size() && IsDigit(text[count])) ++count;
  text.remove_prefix(count);
  return count >= 1 && count <= 3;
}

// "5.1.1" at the start of a text (RFC 2034: class "." subject "." detail, then a blank or the end); empty when none, or
// when its class is not the reply's.
std::string_view EnhancedCode(std::string_view text, int code) {
  std::string_view rest = text;
  if (rest.size() < 5 || rest[0] - '0' != code / 100 || rest[1] != '.') return {};
  rest.remove_prefix(2);
  if (!TakeNumber(rest) || !rest.starts_with('.')) return {};
  rest.remove_prefix(1);
  if (!TakeNumber(rest) || (!rest.empty() && rest.front() != ' ')) return {};
  return text.substr(0, text.size() - rest.size());
}

// The code of a line, 0 when the line is none of a reply.
int CodeOf(std::string_view line) {
  if (line.size() < 3 || !std::all_of(line.begin(), line.begin() + 3, IsDigit)) return 0;
  if (line[0] < '2' || line[0] > '5' || (line.size() > 3 && line[3] != ' ' && line[3] != '-')) return 0;
  return (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
}

}  // namespace

void ReplyReader::Add(std::string_view bytes) {
  if (at_ == buffer_.size()) {
    buffer_.clear();
    at_ = scanned_ = 0;
  } else if (at_ > kLongestLine) {
    buffer_.erase(0, at_);
    scanned_ -= at_;
    at_ = 0;
  }
  buffer_ += bytes;
}

ReplyReader::Step ReplyReader::Next() {
  while (complaint_.empty()) {
    const std::size_t end = buffer_.find('\n', scanned_);
    const std::size_t length = (end == std::string::npos ? buffer_.size() : end) - at_;
    const std::string_view line = std::string_view(buffer_).substr(at_, length);
    if (length > LimitOf(line) + 1) {
      Complain(TooLong(line), line);
    } else if (end == std::string::npos) {
      scanned_ = buffer_.size();
      return Step::kNeedMore;
    } else {
      at_ = scanned_ = end + 1;
      if (TakeLine(line.ends_with('\r') ? line.substr(0, length - 1) : line)) return Step::kReply;
    }
  }
  return Step::kSenseless;
}

std::string ReplyReader::More() const {
  std::string more(line_count_ > 0 ? lines_.substr(0, kShownOfOdd) : std::string());
  more += std::string_view(buffer_).substr(at_, kShownOfOdd - more.size());
  return more;
}

bool ReplyReader::TakeLine(std::string_view line) {
  const int code = CodeOf(line);
  if (line.size() > LimitOf(line)) {
    Complain(TooLong(line), line);
  } else if (code == 0 || line.find('\0') != std::string_view::npos) {
    Complain("its answer is no reply of SMTP", line);
  } else if (line_count_ > 0 && code != reply_.code) {
    Complain("the lines of its reply have different codes", line);
  } else if (line_count_ == kMostLines) {
    Complain("its reply has more than 200 lines", line);
  }
  if (!complaint_.empty()) return false;

  if (line_count_ == 0) {
    reply_.code = code;
    reply_.text.clear();
    lines_.clear();
  }
  std::string_view text = line.size() > 4 ? line.substr(4) : std::string_view();
  const std::string_view enhanced = EnhancedCode(text, code);
  if (line_count_ == 0) reply_.enhanced = enhanced;
  if (!enhanced.empty()) text.remove_prefix(std::min(text.size(), enhanced.size() + 1));
  if (line_count_ > 0) reply_.text += '\n';
  reply_.text += text;
  lines_ += line;
  lines_ += '\n';
  const bool last = line.size() == 3 || line[3] == ' ';
  line_count_ = last ? 0 : line_count_ + 1;
  return last;
}

void ReplyReader::Complain(std::string why, std::string_view line) {
  complaint_ = std::move(why);
  odd_ = line.substr(0, kShownOfOdd);
}

}  // namespace quillcast::smtp
