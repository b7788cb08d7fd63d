#include "smtp/client/body_writer.h"

namespace quillcast::smtp {
namespace {

Error WrongSize() {
  return {Failure::kInternal, "The message is not as long as was announced, so the connection was given up."};
}

}  // namespace

// Takes the next piece when the last one is used up; false at the end of the message.
Result<bool> BodyWriter::HasRest() {
  if (!rest_.empty()) return true;
  const auto piece = source_->Next();
  if (!piece) return piece.error();
  rest_ = *piece;
  return !rest_.empty();
}

Result<void> BodyWriter::Fill(std::string& out, std::size_t enough) {
  while (!ended_ && out.size() < enough) {
    const auto more = HasRest();
    if (!more) return more.error();
    if (!*more) return End(out);
    const std::string_view part = rest_.substr(0, enough - out.size());
    taken_ += part.size();
    if (size_ != 0 && taken_ > size_) return WrongSize();
    if (form_ == Form::kDots) {
      Stuff(part, out);
    } else {
      out += part;
    }
    const char last = part.back();
    after_cr_ = last == '\r';
    at_line_start_ = last == '\n';
    rest_.remove_prefix(part.size());
    // With the last octet of a counted message the server has all of it and may answer at once: the end is known now,
    // not when somebody asks for more.
    if (form_ == Form::kCounted && taken_ == size_) {
      const auto too_many = HasRest();
      if (too_many && !*too_many) return End(out);
      out.pop_back();  // without it the server never has a whole message
      return too_many ? WrongSize() : too_many.error();
    }
  }
  return {};
}

// A line begins after every LF, not after CRLF alone: a server that takes a bare LF for a line end must not see the end
// of the message in the middle of it.
void BodyWriter::Stuff(std::string_view piece, std::string& out) {
  if (at_line_start_ && piece.front() == '.') out += '.';
  for (;;) {
    const auto dot = piece.find("\n.");
    if (dot == std::string_view::npos) break;
    out += piece.substr(0, dot + 2);
    out += '.';
    piece.remove_prefix(dot + 2);
  }
  out += piece;
}

Result<void> BodyWriter::End(std::string& out) {
  if (size_ != 0 && taken_ != size_) return WrongSize();
  ended_ = true;
  if (form_ == Form::kCounted) return {};
  // A last line that was left open is ended here; one ended by CR alone gets the LF that it lacks.
  if (!at_line_start_) out += after_cr_ ? "\n" : "\r\n";
  out += ".\r\n";
  return {};
}

}  // namespace quillcast::smtp
