#include "mail_file/mailbox_list.h"

#include <optional>
#include <utility>

#include "mail_file/gmime_border.h"
#include "platform/text.h"

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kLongestMailbox = 4096;     // bytes
constexpr std::size_t kLongestEncodedWord = 255;  // of an encoded word

// The length of the encoded word (RFC 2047) that the text begins with, whose text may hold commas; 0 for none.
std::size_t WordLength(std::string_view text) {
  if (!text.starts_with("=?")) return 0;
  text = text.substr(0, kLongestEncodedWord);
  const std::size_t charset = text.find('?', 2);
  if (charset == std::string_view::npos || text.substr(0, charset).find_first_of(" \t,") != std::string_view::npos)
    return 0;
  const std::size_t encoding = text.find('?', charset + 1);
  if (encoding != charset + 2) return 0;
  const std::size_t end = text.find("?=", encoding + 1);
  return end == std::string_view::npos ? 0 : end + 2;
}

// Goes through a list and knows whether a separator counts: not in quotes, comments, angle brackets or literals.
class ListCutter {
 public:
  explicit ListCutter(std::string_view list) : list_(list) {}

  // The next piece between separators; false at the end.
  bool Next(std::string_view& piece) {
    if (at_ > list_.size()) return false;
    std::size_t begin = at_;
    is_in_angle_ = is_in_quotes_ = false;
    comments_ = 0;
    for (; at_ < list_.size(); ++at_) {
      if (const std::size_t word = is_in_quotes_ ? 0 : WordLength(list_.substr(at_)); word > 0) {
        at_ += word - 1;
      } else if (IsSeparator(list_[at_])) {
        break;
      } else if (IsOpen() && list_[at_] == ':') {
        begin = at_ + 1;  // what stands before is a group's name
      }
    }
    piece = list_.substr(begin, at_ - begin);
    ++at_;
    return true;
  }

 private:
  bool IsOpen() const { return !is_in_quotes_ && !is_in_angle_ && !is_in_literal_ && comments_ == 0; }

  bool IsSeparator(char c) {
    if (c == '\\' && (is_in_quotes_ || comments_ > 0)) {
      ++at_;
    } else if (c == '"' && comments_ == 0) {
      is_in_quotes_ = !is_in_quotes_;
    } else if (is_in_quotes_) {
      return false;
    } else if (c == '(') {
      ++comments_;
    } else if (c == ')' && comments_ > 0) {
      --comments_;
    } else if (comments_ == 0 && (c == '<' || c == '>')) {
      is_in_angle_ = c == '<';
    } else if (comments_ == 0 && (c == '[' || c == ']')) {
      is_in_literal_ = c == '[';
    }
    return (c == ',' || c == ';') && IsOpen();
  }

  std::string_view list_;
  std::size_t at_ = 0;
  std::size_t comments_ = 0;
  bool is_in_quotes_ = false;
  bool is_in_angle_ = false;
  bool is_in_literal_ = false;
};

// A name by an encoded word may hold what would end it if it stood there itself; GMime goes by that.
std::optional<Mailbox> WithEncodedName(std::string_view piece) {
  const std::size_t angle = piece.rfind('<');
  if (angle == std::string_view::npos || !piece.ends_with('>') || !piece.starts_with("=?")) return {};
  auto mailbox = ReadMailbox(piece.substr(angle));
  if (mailbox) mailbox->name = DecodeHeaderText(platform::Trim(piece.substr(0, angle)));
  return mailbox;
}

Mailbox AsMailbox(std::string_view piece) {
  if (auto mailbox = WithEncodedName(piece)) return *std::move(mailbox);
  if (auto mailbox = ReadMailbox(piece); mailbox && !mailbox->address.empty()) return *std::move(mailbox);
  std::string text = DecodeHeaderText(piece);
  if (piece.find_first_of(" \t") == std::string_view::npos) return {{}, std::move(text)};
  return {std::move(text), {}};
}

}  // namespace

void EachMailbox(std::string_view field, const std::function<bool(Mailbox)>& take) {
  ListCutter cutter(field);
  for (std::string_view piece; cutter.Next(piece);) {
    piece = platform::Trim(piece.substr(0, kLongestMailbox));
    if (!piece.empty() && !take(AsMailbox(piece))) return;
  }
}

}  // namespace quillcast::mail_file
