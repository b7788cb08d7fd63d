#include "mime/encoded_words.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/base64.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::mime {
namespace {

constexpr std::size_t kLongestWord = 75;

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

bool ChoosesQ(std::string_view utf8, const Charset& charset, HeaderEncoding encoding) {
  if (encoding != HeaderEncoding::kNone) return encoding == HeaderEncoding::kQ;
  std::string bytes;
  charset.Encode(utf8, bytes);
  return QSize(bytes) <= BSize(bytes.size());
}

}  // namespace

bool NeedsEncodedWord(std::string_view text) {
  return !platform::IsAscii(text) || text.find("=?") != std::string_view::npos;
}

void AppendEncodedWords(std::string& out, std::string_view utf8, const Charset& charset, HeaderEncoding encoding,
                        std::size_t& column) {
  const bool q = ChoosesQ(utf8, charset, encoding);
  const std::string opening = "=?" + std::string(charset.MimeName()) + (q ? "?Q?" : "?B?");
  const auto room = [&] { return std::min(kLongestWord, kHeaderColumns - std::min(column, kHeaderColumns)); };
  const auto size_of = [&](std::string_view bytes) {
    return opening.size() + 2 + (q ? QSize(bytes) : BSize(bytes.size()));
  };
  std::string word;  // the bytes of the word under construction; never longer than one word
  const auto write_word = [&] {
    const std::size_t start = out.size();
    out += opening;
    q ? AppendQ(out, word) : platform::AppendBase64(out, word);
    out += "?=";
    column += out.size() - start;
    word.clear();
  };
  while (!utf8.empty()) {
    const std::size_t length = platform::DecodeUtf8(utf8).length;
    std::string character;
    charset.Encode(utf8.substr(0, length), character);
    utf8.remove_prefix(length);
    if (!word.empty() && size_of(word + character) > room()) {
      write_word();
      out += "\r\n ";
      column = 1;
    }
    word += character;
  }
  if (!word.empty()) write_word();
}

}  // namespace quillcast::mime
