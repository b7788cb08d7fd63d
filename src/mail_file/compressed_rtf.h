// Rich text as winmail.dat holds it: compressed by references to the last 4,096 bytes, the first of which are known
// beforehand, or as it is.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillcast::mail_file {

// Decodes piece by piece, from any cut on; a decoder is for one text. It comes to at most some eight times what is
// read, and to no more than its header says. What is damaged is passed over, and what is no compressed rich text is
// empty.
class CompressedRtfDecoder {
 public:
  CompressedRtfDecoder();
  void Decode(std::string_view bytes, std::string& out);

 private:
  static constexpr std::size_t kWindow = 4096;
  enum class Form : std::uint8_t { kUnknown, kCompressed, kPlain, kNone };

  void TakeHeader(std::uint8_t byte);
  void TakeByte(std::uint8_t byte, std::string& out);
  void TakeReference(std::string& out);
  void Give(char c, std::string& out);

  std::array<std::uint8_t, 16> header_{};
  std::size_t header_size_ = 0;
  Form form_ = Form::kUnknown;
  std::uint32_t left_ = 0;  // bytes that are still to be given
  std::array<char, kWindow> window_{};
  std::size_t at_ = 0;     // in the window
  unsigned kinds_ = 0;     // of the next items, one bit each: a reference or a byte
  int kinds_left_ = 0;     // how many
  int first_of_two_ = -1;  // the first byte of a reference
};

}  // namespace quillcast::mail_file
