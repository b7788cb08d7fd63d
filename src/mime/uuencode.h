// Uuencoding, for attachments of messages without MIME: they stand in the body, behind the text; and back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillcast::mime {

// Encodes one file after the other, each in the order Begin, Encode for every piece, Finish. Lines hold 45 bytes and
// end in CRLF; zero bits are "`", so that no line ends in a blank. The result is the same however the stream is cut. A
// line can begin with "." (it holds 14 bytes, as only the last can): to double it is for the SMTP layer, as with any
// text.
class Uuencoder {
 public:
  // "begin 644 NAME", the name as AsciiFileName gives it.
  void Begin(std::string_view file_name, std::string& out);
  void Encode(std::string_view bytes, std::string& out);
  // Writes what is left as the last, shorter line, the line without bytes and "end".
  void Finish(std::string& out);

 private:
  static constexpr std::size_t kLineBytes = 45;

  std::array<char, kLineBytes> pending_{};
  std::size_t pending_size_ = 0;
};

// Decodes the lines behind "begin 644 NAME". The result is the same however the stream is cut, and a copy goes on from
// where the other one is. It ends at the line without bytes, or at one that is none. Blanks that are missing at the end
// of a line, where zero bits are written as such, count as there.
class Uudecoder {
 public:
  void Decode(std::string_view bytes, std::string& out);

 private:
  void TakeDigit(std::uint32_t digit, std::string& out);

  std::size_t left_ = 0;  // bytes of the line
  std::uint32_t bits_ = 0;
  int digits_ = 0;  // in bits_
  bool is_at_line_ = true;
  bool is_ended_ = false;
};

}  // namespace quillcast::mime
