// Base64 (RFC 4648 section 4, RFC 2045 6.8): whole texts, and streams broken into the lines of a message body.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillcast::platform {

// Without line breaks, padded to a multiple of four.
void AppendBase64(std::string& out, std::string_view bytes);
std::string Base64(std::string_view bytes);

// Encodes a stream piece by piece into lines of 76 columns, each ended by CRLF. The result is the same however the
// stream is cut.
class Base64LineEncoder {
 public:
  // Appends every line that is full by now; up to 56 bytes wait for more, or for Finish.
  void Encode(std::string_view bytes, std::string& out);
  // Writes what is left as the last, shorter line. The encoder is then ready for another stream.
  void Finish(std::string& out);

 private:
  static constexpr std::size_t kLineBytes = 57;  // 76 columns

  std::array<char, kLineBytes> pending_{};
  std::size_t pending_size_ = 0;
};

// Nothing for what is no base64: a foreign character (blanks and line ends included), wrong padding, a cut group.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace quillcast::platform
