#include "platform/utf8.h"

#include <cstdint>
#include <cstring>

namespace quillcast::platform {
namespace {

constexpr std::uint64_t kEach = 0x0101010101010101;  // times a byte: eight of it

std::uint8_t ByteAt(std::string_view text, std::size_t at) { return static_cast<std::uint8_t>(text[at]); }

// The length that a lead byte announces, 0 when it is none.
std::size_t AnnouncedLength(std::uint8_t lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  if (lead >= 0xF0 && lead < 0xF5) return 4;
  return 0;
}

// How many bytes the text begins with before the first for which `ends` sets the high bit; it is given one or eight.
template <typename Ends>
std::size_t RunOf(std::string_view text, Ends ends) {
  std::size_t run = 0;
  std::uint64_t eight = 0;
  while (run + sizeof eight <= text.size()) {
    std::memcpy(&eight, text.data() + run, sizeof eight);
    if ((ends(eight) & (kEach * 0x80)) != 0) break;
    run += sizeof eight;
  }
  while (run < text.size() && (ends(ByteAt(text, run)) & 0x80) == 0) ++run;
  return run;
}

}  // namespace

DecodedUtf8 DecodeUtf8(std::string_view text) {
  const std::uint8_t lead = ByteAt(text, 0);
  const std::size_t length = AnnouncedLength(lead);
  if (length == 1) return {lead, 1};
  if (length == 0 || text.size() < length) return {kNotUtf8, 1};
  char32_t code = lead & (0x7F >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((ByteAt(text, i) & 0xC0) != 0x80) return {kNotUtf8, 1};
    code = (code << 6) | (ByteAt(text, i) & 0x3F);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  if (overlong || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return {kNotUtf8, 1};
  return {code, length};
}

void AppendUtf8(std::string& out, char32_t code) {
  const auto tail = [code](int shift) { return static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += {static_cast<char>(0xC0 | (code >> 6)), tail(0)};
  } else if (code < 0x10000) {
    out += {static_cast<char>(0xE0 | (code >> 12)), tail(6), tail(0)};
  } else {
    out += {static_cast<char>(0xF0 | (code >> 18)), tail(12), tail(6), tail(0)};
  }
}

std::size_t AsciiRun(std::string_view text) {
  return RunOf(text, [](std::uint64_t bytes) { return bytes; });
}

// The high bit of a byte is set by one more where it is DEL, and by 0x20 less where it is a control character; what is
// borrowed or carried from one byte to the next comes from one that is not printable itself.
std::size_t PrintableRun(std::string_view text) {
  return RunOf(text, [](std::uint64_t bytes) { return bytes | (bytes + kEach) | (bytes - kEach * 0x20); });
}

bool IsUtf8(std::string_view text) {
  for (;;) {
    text.remove_prefix(AsciiRun(text));
    if (text.empty()) return true;
    const auto [code, length] = DecodeUtf8(text);
    if (code == kNotUtf8) return false;
    text.remove_prefix(length);
  }
}

// The first octet of a C1 never goes on with another character, so there is no need to decode.
bool HoldsControl(std::string_view text) {
  for (std::size_t n = PrintableRun(text); n < text.size(); ++n) {
    const auto octet = static_cast<unsigned char>(text[n]);
    if (octet < 0x20 || octet == 0x7F) return true;
    if (octet == 0xC2 && n + 1 < text.size() && static_cast<unsigned char>(text[n + 1]) - 0x80U < 0x20U) return true;
  }
  return false;
}

bool IsAscii(std::string_view text) { return AsciiRun(text) == text.size(); }

std::size_t IncompleteUtf8Tail(std::string_view text) {
  for (std::size_t back = 1; back <= 3 && back <= text.size(); ++back) {
    const std::uint8_t byte = ByteAt(text, text.size() - back);
    if ((byte & 0xC0) == 0x80) continue;
    return AnnouncedLength(byte) > back ? back : 0;
  }
  return 0;
}

}  // namespace quillcast::platform
