#include "mime/encoded_words.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/base64.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::mime {
namespace {

constexpr std::size_t kLongestWrittenWord = 75;
constexpr std::size_t kLettersLess = 5;
constexpr std::size_t kMostMarks = 30;  // on one letter (UAX 15, stream-safe text)

// What RFC 2047 5 (3) allows in every place where an encoded word may stand.
bool IsPlainInQ(char c) {
  return platform::AsciiIsAlnum(c) || c == '!' || c == '*' || c == '+' || c == '-' || c == '/';
}

std::size_t QSize(std::string_view bytes) {
  std::size_t size = 0;
  for (const char c : bytes) size += IsPlainInQ(c) || c == ' ' ? 1 : 3;
  return size;
}

std::size_t BSize(std::size_t bytes) { return (bytes + 2) / 3 * 4; }

void AppendQ(std::string& out, std::string_view bytes) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  for (const char c : bytes) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (IsPlainInQ(c)) {
      out += c;
    } else if (c == ' ') {
      out += '_';
    } else {
      out += {'=', kHex[byte >> 4], kHex[byte & 15]};
    }
  }
}

// One character, with the marks on it if `with_marks`; a text of marks alone is not one letter, which would be
// measured anew for each of its words.
std::size_t LetterLength(std::string_view utf8, bool with_marks) {
  std::size_t length = platform::DecodeUtf8(utf8).length;
  for (std::size_t marks = 0; with_marks && marks < kMostMarks && length < utf8.size(); ++marks) {
    if (static_cast<std::uint8_t>(utf8[length]) < 0x80) break;
    const auto [code, mark] = platform::DecodeUtf8(utf8.substr(length));
    if (code == platform::kNotUtf8 || !u_hasBinaryProperty(static_cast<UChar32>(code), UCHAR_GRAPHEME_EXTEND)) break;
    length += mark;
  }
  return length;
}

// The form of one field's words, and how long they become. Sets that shift make a word longer by more than the sum of
// its characters, so a length is that of the whole word each time.
class WordForm {
 public:
  WordForm(std::string_view utf8, const charset::Charset& charset, HeaderEncoding encoding)
      : charset_(charset.ForHeaders()), q_(encoding == HeaderEncoding::kQ) {
    if (encoding == HeaderEncoding::kNone) q_ = Size(utf8, true) <= Size(utf8, false);
  }

  std::size_t Columns(std::string_view utf8) { return Columns(utf8, q_); }
  std::size_t ColumnsInEitherEncoding(std::string_view utf8) {
    return std::max(Columns(utf8, true), Columns(utf8, false));
  }

  // The length of a beginning, of whole letters, whose word fits into `room`; 0 when none does. The longest, but a few
  // letters less where base64 then needs no padding: some readers decode neighbouring words as one, and stop at it.
  std::size_t LongestFit(std::string_view utf8, std::size_t room, bool with_marks) {
    std::array<std::size_t, kLongestWrittenWord> ends{};  // a letter takes a column at least
    std::size_t count = 0;
    for (std::size_t at = 0; at < utf8.size() && count < ends.size(); ends[count++] = at) {
      at += LetterLength(utf8.substr(at), with_marks);
    }
    const auto fits = [&](std::size_t end) { return Columns(utf8.substr(0, end)) <= room; };
    if (count > 0 && fits(ends[count - 1])) return ends[count - 1];
    const auto* const beyond = std::ranges::partition_point(ends.begin(), ends.begin() + count, fits);
    if (beyond == ends.begin()) return 0;
    const auto longest = static_cast<std::size_t>(beyond - ends.begin()) - 1;
    for (std::size_t less = 0; !q_ && less <= std::min(longest, kLettersLess); ++less) {
      Encode(utf8.substr(0, ends[longest - less]));
      if (bytes_.size() % 3 == 0) return ends[longest - less];
    }
    return ends[longest];
  }

  void Append(std::string& out, std::string_view utf8) {
    Encode(utf8);
    out += "=?";
    out += charset_.MimeName();
    out += q_ ? "?Q?" : "?B?";
    q_ ? AppendQ(out, bytes_) : platform::AppendBase64(out, bytes_);
    out += "?=";
  }

 private:
  std::size_t Columns(std::string_view utf8, bool q) {
    constexpr std::size_t kDelimiters = 7;  // as in =?...?Q?...?=
    return kDelimiters + charset_.MimeName().size() + Size(utf8, q);
  }

  std::size_t Size(std::string_view utf8, bool q) {
    Encode(utf8);
    return q ? QSize(bytes_) : BSize(bytes_.size());
  }

  void Encode(std::string_view utf8) {
    if (utf8.data() == encoded_.data() && utf8.size() == encoded_.size()) return;
    bytes_.clear();
    charset_.Encode(utf8, bytes_);
    encoded_ = utf8;
  }

  charset::Charset charset_;
  bool q_;
  std::string_view encoded_;  // the text that bytes_ holds
  std::string bytes_;
};

}  // namespace

bool NeedsEncodedWord(std::string_view text) {
  return !platform::IsAscii(text) || text.find("=?") != std::string_view::npos;
}

std::size_t FirstWordColumns(std::string_view utf8, const charset::Charset& charset, HeaderEncoding encoding) {
  const std::string_view letter = utf8.substr(0, LetterLength(utf8, true));
  WordForm form(letter, charset, encoding);
  const std::size_t longest =
      encoding == HeaderEncoding::kNone ? form.ColumnsInEitherEncoding(letter) : form.Columns(letter);
  return std::min(longest, kLongestWrittenWord);
}

void AppendEncodedWords(std::string& out, std::string_view utf8, const charset::Charset& charset,
                        HeaderEncoding encoding, std::size_t& column) {
  WordForm form(utf8, charset, encoding);
  while (!utf8.empty()) {
    const std::size_t room = std::min(kLongestWrittenWord, kHeaderColumns - std::min(column, kHeaderColumns));
    std::size_t length = form.LongestFit(utf8, room, true);
    if (length == 0) length = form.LongestFit(utf8, room, false);
    if (length == 0) length = LetterLength(utf8, false);
    const std::size_t start = out.size();
    form.Append(out, utf8.substr(0, length));
    column += out.size() - start;
    utf8.remove_prefix(length);
    if (utf8.empty()) break;
    out += "\r\n ";
    column = 1;
  }
}

}  // namespace quillcast::mime
