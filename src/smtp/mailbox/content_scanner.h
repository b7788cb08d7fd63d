// Reads the content of a message off the wire: finds its end, takes the dot-stuffing off, and judges its lines.
#pragma once

#include <cstdint>
#include <string_view>

namespace quillcast::smtp {

// How the end of the content is told: by CRLF.CRLF alone (RFC 5321 4.1.1.4; no other line end counts, or one message
// could smuggle a second one in), or by octets counted outside (RFC 3030).
enum class Framing { kDot, kCounted };

// Only CRLF ends a line (RFC 5321 2.3.8), so that no two programs can read a message differently.
enum class LineFault { kNone, kBareCr, kBareLf, kTooLong };

// Keeps no content: what it holds back is at most two octets, which may turn out to belong to the end.
class ContentScanner {
 public:
  // The longest line of a message, CRLF included (RFC 5321 4.5.3.1.6). A longer one is handed on all the same, and is a
  // fault.
  static constexpr std::size_t kLongestLine = 1000;

  explicit ContentScanner(Framing framing = Framing::kDot) : framing_(framing) {}

  // Takes bytes until they or the content end; hands pieces of content to `take` (std::string_view), large ones as
  // they come. Returns how many bytes were used: those behind the end are not.
  template <typename Take>
  std::size_t Scan(std::string_view bytes, Take&& take);

  // The end was read: of kDot alone, for where counted content ends its caller knows.
  bool ended() const { return ended_; }
  // The gravest thing wrong with the lines; the same one however the bytes were cut. Ask at the end: a counted content
  // may end in a CR that no LF follows.
  LineFault Fault() const;

 private:
  // kDot: a "." at the start of a line is held back. kDotCr: ".\r" is held back.
  enum class At { kLineStart, kInLine, kCr, kDot, kDotCr };

  // What one step found: content to hand on up to `until`, and where the next piece begins.
  struct Step {
    std::size_t next;
    bool cut;  // the content before this step ends a piece, and the next one begins at `next`
  };
  Step Advance(std::string_view bytes, std::size_t i);
  std::size_t ToLineEnd(std::string_view bytes, std::size_t i);

  Framing framing_;
  At at_ = At::kLineStart;
  bool bare_cr_ = false;
  bool bare_lf_ = false;
  bool too_long_ = false;
  bool ended_ = false;
  bool give_back_cr_ = false;
  std::size_t line_length_ = 0;
};

template <typename Take>
std::size_t ContentScanner::Scan(std::string_view bytes, Take&& take) {
  std::size_t piece = 0;
  std::size_t i = 0;
  while (i < bytes.size() && !ended_) {
    const auto step = Advance(bytes, i);
    if (step.cut) {
      if (i > piece) take(bytes.substr(piece, i - piece));
      piece = step.next;
    }
    if (give_back_cr_) {
      take(std::string_view("\r"));
      give_back_cr_ = false;
    }
    i = step.next;
  }
  if (i > piece) take(bytes.substr(piece, i - piece));
  return i;
}

}  // namespace quillcast::smtp
