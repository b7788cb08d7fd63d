#include "mime/quoted_printable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "mime/quoted_printable_scan.h"

namespace quillcast::mime {
namespace {

using quoted_printable::IsPlain;
using quoted_printable::Scan;

constexpr std::size_t kRoom = 75;  // the 76th column is for the "=" of a soft break
constexpr std::string_view kFrom = "From ";

using Escaped = std::array<char, 3>;

constexpr std::array<Escaped, 256> MakeEscapes() {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::array<Escaped, 256> escapes{};
  for (std::size_t c = 0; c < escapes.size(); ++c) escapes[c] = {'=', kHex[c >> 4], kHex[c & 15]};
  return escapes;
}
constexpr std::array<Escaped, 256> kEscapes = MakeEscapes();

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsLineEnd(std::string_view rest) { return rest.starts_with("\r\n"); }

// Appends to a text that has been made long enough for the worst case beforehand.
class LineWriter {
 public:
  LineWriter(std::string& out, std::string_view bytes, std::size_t column) : out_(out), column_(column) {
    const std::size_t start = out.size();
    out.resize(start + LongestEncoding(bytes));
    to_ = out.data() + start;
  }
  ~LineWriter() { out_.resize(static_cast<std::size_t>(to_ - out_.data())); }
  LineWriter(const LineWriter&) = delete;
  LineWriter& operator=(const LineWriter&) = delete;

  std::size_t column() const { return column_; }
  bool is_full() const { return column_ >= kRoom; }
  // What comes next goes to another line, however much room this one has.
  void MakeFull() { column_ = kRoom; }

  void HardBreak() { Break("\r\n"); }
  void SoftBreak() { Break("=\r\n"); }

  void Escape(char c) {
    if (column_ + sizeof(Escaped) > kRoom) SoftBreak();
    Put(kEscapes[static_cast<std::uint8_t>(c)].data(), sizeof(Escaped));
    column_ += sizeof(Escaped);
  }

  // The plain bytes at the start of `rest` for which the line has room, written behind its end, where Take makes a
  // number of them part of it.
  std::size_t Preview(std::string_view rest) { return Scan::CopyPlain(to_, rest, kRoom - column_); }
  void Take(std::size_t bytes) {
    to_ += bytes;
    column_ += bytes;
  }

 private:
  // A foreign byte takes two more, and so do a line's first and last byte if they are escaped for where they stand; the
  // two of a CRLF, both foreign, leave room for theirs. A soft break takes three. There is one after each line feed of
  // a file, and else one for at least 73 columns.
  static std::size_t LongestEncoding(std::string_view bytes) {
    const quoted_printable::Census census = Scan::Count(bytes);
    const std::size_t escaped = bytes.size() + 2 * census.foreign;
    return escaped + 4 + 5 * (escaped / 71 + 2 + census.line_feeds);
  }

  void Put(const char* from, std::size_t size) {
    std::memcpy(to_, from, size);
    to_ += size;
  }

  void Break(std::string_view line_end) {
    Put(line_end.data(), line_end.size());
    column_ = 0;
  }

  std::string& out_;
  char* to_;
  std::size_t column_;
};

// True for what must not begin a line. While pieces follow, the beginning of "From " counts too.
bool IsUnsafeLineStart(std::string_view rest, bool at_end) {
  if (rest.front() == '.') return true;
  if (rest.front() != 'F') return false;
  return rest.starts_with(kFrom) || (!at_end && kFrom.starts_with(rest));
}

// How many bytes at the start of `rest` are to be written as they stand.
std::size_t PlainRun(LineWriter& writer, std::string_view rest) {
  const std::size_t run = writer.Preview(rest);
  if (run == 0 || !IsBlank(rest[run - 1])) return run;
  const std::string_view after = rest.substr(run);
  return after.empty() || IsLineEnd(after) ? run - 1 : run;
}

void WriteFileBytes(LineWriter& writer, std::string_view rest) {
  while (!rest.empty()) {
    if (writer.is_full()) writer.SoftBreak();
    const bool unsafe = writer.column() == 0 && (rest.front() == '.' || rest.front() == 'F');
    const std::size_t run = unsafe ? 0 : writer.Preview(rest);
    writer.Take(run);
    rest.remove_prefix(run);
    if (unsafe) {
      writer.Escape(rest.front());
      rest.remove_prefix(1);
    }
    for (; !rest.empty() && !IsPlain(rest.front()); rest.remove_prefix(1)) {
      writer.Escape(rest.front());
      if (rest.front() == '\n') writer.MakeFull();
    }
  }
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
  LineWriter writer(out, bytes, column);
  std::string_view rest = bytes;
  while (!rest.empty()) {
    if (IsLineEnd(rest)) {
      writer.HardBreak();
      rest.remove_prefix(2);
      continue;
    }
    if (writer.is_full()) writer.SoftBreak();
    const bool unsafe = writer.column() == 0 && IsUnsafeLineStart(rest, at_end);
    const std::size_t run = unsafe ? 0 : PlainRun(writer, rest);
    writer.Take(run);
    rest.remove_prefix(run);
    if (run == 0) {
      writer.Escape(rest.front());
      rest.remove_prefix(1);
    }
    for (; !rest.empty() && !IsPlain(rest.front()) && rest.front() != '\r'; rest.remove_prefix(1)) {
      writer.Escape(rest.front());
    }
  }
  column = writer.column();
}

void QuotedPrintableFileEncoder::Encode(std::string_view bytes, std::string& out) {
  if (bytes.empty()) return;
  LineWriter writer(out, bytes, column_);
  if (held_blank_ != 0) WriteFileBytes(writer, {&held_blank_, 1});
  held_blank_ = IsBlank(bytes.back()) ? bytes.back() : '\0';
  if (held_blank_ != 0) bytes.remove_suffix(1);
  WriteFileBytes(writer, bytes);
  column_ = writer.column();
}

void QuotedPrintableFileEncoder::Finish(std::string& out) {
  if (held_blank_ != 0) {
    LineWriter writer(out, {&held_blank_, 1}, column_);
    writer.Escape(held_blank_);
    column_ = writer.column();
  }
  if (column_ > 0) out += "\r\n";
  *this = {};
}

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
