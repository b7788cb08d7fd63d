#include "mime/quoted_printable.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quillcast::mime {
namespace {

constexpr std::size_t kRoom = 75;  // the 76th column is for the "=" of a soft break
constexpr std::string_view kHex = "0123456789ABCDEF";
constexpr std::string_view kFrom = "From ";

// What may stand as it is inside a line.
constexpr std::array<bool, 256> MakePlain() {
  std::array<bool, 256> plain{};
  for (std::size_t c = ' '; c <= '~'; ++c) plain[c] = c != '=';
  plain['\t'] = true;
  return plain;
}
constexpr std::array<bool, 256> kPlain = MakePlain();

bool IsPlain(char c) { return kPlain[static_cast<std::uint8_t>(c)]; }
bool IsBlank(char c) { return c == ' ' || c == '\t'; }

void AppendEscape(std::string& out, char c, std::size_t& column) {
  if (column + 3 > kRoom) AppendSoftBreak(out, column);
  const auto byte = static_cast<std::uint8_t>(c);
  const std::array<char, 3> escape = {'=', kHex[byte >> 4], kHex[byte & 15]};
  out.append(escape.data(), escape.size());
  column += escape.size();
}

// True for what must not begin a line. While pieces follow, the beginning of "From " counts too.
bool IsUnsafeLineStart(std::string_view rest, bool at_end) {
  if (rest.front() == '.') return true;
  if (rest.front() != 'F') return false;
  return rest.starts_with(kFrom) || (!at_end && kFrom.starts_with(rest));
}

// How many bytes at the start of `rest` can be copied into the room that the line has left.
std::size_t PlainRun(std::string_view rest, std::size_t room) {
  const std::size_t limit = std::min(room, rest.size());
  std::size_t run = 0;
  while (run < limit && IsPlain(rest[run])) ++run;
  const std::string_view after = rest.substr(run);
  if (run > 0 && IsBlank(rest[run - 1]) && (after.empty() || after.starts_with("\r\n"))) --run;
  return run;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

void DecodeLine(std::string& out, std::string_view line) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    const int high = line[i] == '=' && i + 2 < line.size() ? HexValue(line[i + 1]) : -1;
    const int low = high >= 0 ? HexValue(line[i + 2]) : -1;
    if (low < 0) {
      out += line[i];
      continue;
    }
    out += static_cast<char>(high << 4 | low);
    i += 2;
  }
}

}  // namespace

void AppendSoftBreak(std::string& out, std::size_t& column) {
  out += "=\r\n";
  column = 0;
}

void AppendQuotedPrintable(std::string& out, std::string_view bytes, std::size_t& column, bool at_end) {
  std::string_view rest = bytes;
  while (!rest.empty()) {
    if (rest.starts_with("\r\n")) {
      out += "\r\n";
      column = 0;
      rest.remove_prefix(2);
      continue;
    }
    if (column >= kRoom) AppendSoftBreak(out, column);
    const bool unsafe = column == 0 && IsUnsafeLineStart(rest, at_end);
    const std::size_t run = unsafe ? 0 : PlainRun(rest, kRoom - column);
    out.append(rest.data(), run);
    column += run;
    rest.remove_prefix(run);
    if (run > 0) continue;
    AppendEscape(out, rest.front(), column);
    rest.remove_prefix(1);
  }
}

void QuotedPrintableFileEncoder::Encode(std::string_view bytes, std::string& out) {
  while (!bytes.empty()) {
    const auto plain = bytes.substr(0, bytes.find('\r'));
    AppendQuotedPrintable(out, plain, column_, false);
    bytes.remove_prefix(plain.size());
    if (bytes.empty()) break;
    AppendQuotedPrintable(out, "\r", column_, false);
    bytes.remove_prefix(1);
  }
}

void QuotedPrintableFileEncoder::Finish(std::string&) { column_ = 0; }

std::string DecodeQuotedPrintable(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const std::size_t line_feed = text.find('\n');
    const bool has_end = line_feed != std::string_view::npos;
    std::string_view line = text.substr(0, has_end ? line_feed : text.size());
    text.remove_prefix(has_end ? line_feed + 1 : text.size());
    const bool has_return = has_end && line.ends_with('\r');
    if (has_return) line.remove_suffix(1);
    while (!line.empty() && IsBlank(line.back())) line.remove_suffix(1);
    const bool soft = line.ends_with('=');
    if (soft) line.remove_suffix(1);
    DecodeLine(out, line);
    if (has_end && !soft) out += has_return ? "\r\n" : "\n";
  }
  return out;
}

}  // namespace quillcast::mime
