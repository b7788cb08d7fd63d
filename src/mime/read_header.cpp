#include "mime/read_header.h"

#include <algorithm>
#include <optional>

#include "charset/charset.h"
#include "mime/quoted_printable.h"
#include "platform/base64.h"
#include "platform/text.h"

namespace quillcast::mime {
namespace {

constexpr std::size_t kLongestReadWord = 255;  // octets; the RFC allows 75, and others write more
constexpr std::string_view kBlanks = " \t\r\n";

// The next line without its end, taken off the front.
std::string_view TakeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

struct DecodedWord {
  std::string text;
  std::size_t size;  // of the encoded one
};

// As others write it: with foreign characters, padding within or none. Nothing where its digits end within an octet, of
// which the next word may have the rest.
std::optional<std::string> DecodeLeniently(std::string_view text) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  std::string digits;
  const auto take_digits = [&](bool are_padded) {
    digits.append((4 - digits.size() % 4) % 4, '=');
    const auto bytes = platform::DecodeBase64(digits);
    if (!bytes || (!are_padded && platform::Base64(*bytes) != digits)) return false;
    out += *bytes;
    digits.clear();
    return true;
  };
  for (const char c : text) {
    if (kDigits.find(c) != std::string_view::npos) digits += c;
    if (c == '=' && !take_digits(true)) return {};
  }
  const bool is_some = take_digits(false) && (!out.empty() || text.empty());
  return is_some ? std::optional(std::move(out)) : std::nullopt;
}

// One that is not closed has the next within.
bool IsBase64Text(std::string_view text) { return text.find_first_of("? \t\r\n") == std::string_view::npos; }

// The Q encoding differs from quoted-printable in the underscore, and has no lines.
std::optional<std::string> DecodeText(char encoding, std::string_view text) {
  if (encoding == 'b') return IsBase64Text(text) ? DecodeLeniently(text) : std::nullopt;
  if (encoding != 'q' || text.find_first_of(kBlanks) != std::string_view::npos) return {};
  return DecodeQuotedPrintable(platform::ReplaceAll(text, "_", "=20"));
}

// The parts of an encoded word, as they stand there.
struct Shape {
  std::string_view charset;  // with its language
  char encoding;             // in lower case
  std::string_view text;
  std::size_t size;  // of all of it
};

// Of that which `text`, beginning with "=?", begins with.
std::optional<Shape> ShapeOf(std::string_view text) {
  text = text.substr(0, kLongestReadWord);
  const std::size_t charset_end = text.find('?', 2);
  if (charset_end == std::string_view::npos || text.size() < charset_end + 5 || text[charset_end + 2] != '?') return {};
  const std::size_t end = text.find("?=", charset_end + 3);
  if (end == std::string_view::npos) return {};
  return Shape{text.substr(2, charset_end - 2), platform::AsciiLower(text[charset_end + 1]),
               text.substr(charset_end + 3, end - charset_end - 3), end + 2};
}

std::optional<DecodedWord> WordIn(std::string_view text) {
  const auto shape = ShapeOf(text);
  if (!shape) return {};
  const auto charset = charset::FindCharset(shape->charset.substr(0, shape->charset.find('*')));  // RFC 2231 5
  const auto bytes = DecodeText(shape->encoding, shape->text);
  if (!charset || !bytes) return {};
  return DecodedWord{charset->Decode(*bytes), shape->size};
}

}  // namespace

std::string DecodeEncodedWords(std::string_view text) {
  std::string out;
  bool after_word = false;
  while (!text.empty()) {
    const std::size_t start = std::min(text.find("=?"), text.size());
    const auto word = start < text.size() ? WordIn(text.substr(start)) : std::nullopt;
    const std::size_t plain = word || start == text.size() ? start : start + 2;
    const bool only_blanks = text.substr(0, plain).find_first_not_of(kBlanks) == std::string_view::npos;
    if (!after_word || !word || !only_blanks) out += text.substr(0, plain);
    if (word) out += word->text;
    after_word = word.has_value();
    text.remove_prefix(word ? start + word->size : plain);
  }
  return out;
}

std::string JoinBase64Words(std::string_view text) {
  std::string out;
  std::string_view charset;  // of those that are being joined
  std::string bytes;
  std::string_view cut;  // the set of one that the next goes on with, which then stays as well
  const auto end = [&] {
    if (!charset.empty()) out.append("=?").append(charset).append("?b?").append(platform::Base64(bytes)) += "?=";
    charset = {};
    bytes.clear();
  };
  while (!text.empty()) {
    const std::size_t start = std::min(text.find("=?"), text.size());
    const auto shape = start < text.size() ? ShapeOf(text.substr(start)) : std::nullopt;
    const bool only_blanks = text.substr(0, start).find_first_not_of(kBlanks) == std::string_view::npos;
    const bool is_base64 = shape && shape->encoding == 'b' && IsBase64Text(shape->text);
    const bool goes_on = is_base64 && only_blanks && !cut.empty() && cut == shape->charset;
    const auto decoded = is_base64 && !goes_on ? DecodeLeniently(shape->text) : std::nullopt;
    cut = is_base64 && !decoded && !shape->text.ends_with('=') ? shape->charset : std::string_view();
    if (!decoded || !only_blanks || !platform::EqualsIgnoringAsciiCase(shape->charset, charset)) {
      end();
      out += text.substr(0, start);
    }
    const std::size_t size = is_base64 ? shape->size : std::min<std::size_t>(2, text.size() - start);
    if (!decoded) out += text.substr(start, size);
    if (decoded && charset.empty()) charset = shape->charset;
    if (decoded) bytes += *decoded;
    text.remove_prefix(start + size);
  }
  end();
  return out;
}

std::string ReadHeader(std::string_view message, std::string_view name) {
  while (!message.empty()) {
    const std::string_view line = TakeLine(message);
    if (line.empty()) break;
    if (line.size() <= name.size() || line[name.size()] != ':' ||
        !platform::EqualsIgnoringAsciiCase(line.substr(0, name.size()), name)) {
      continue;
    }
    std::string value(line.substr(name.size() + 1));
    while (message.starts_with(' ') || message.starts_with('\t')) value += TakeLine(message);
    return DecodeEncodedWords(platform::Trim(value));
  }
  return {};
}

}  // namespace quillcast::mime
