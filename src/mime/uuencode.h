// Uuencoding, for attachments of messages without MIME: they stand in the body, behind the text.
#pragma once

#include <array>
#include <cstddef>
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

}  // namespace quillcast::mime
