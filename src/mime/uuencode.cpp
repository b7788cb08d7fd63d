#include "mime/uuencode.h"

#include <algorithm>

#include "mime/header_text.h"

namespace quillcast::mime {
namespace {

char Digit(std::uint32_t bits) { return (bits & 63) == 0 ? '`' : static_cast<char>(' ' + (bits & 63)); }

void AppendEncodedLine(std::string& out, std::string_view bytes) {
  const auto byte_at = [bytes](std::size_t at) -> std::uint32_t {
    return at < bytes.size() ? static_cast<std::uint8_t>(bytes[at]) : 0;
  };
  out += Digit(static_cast<std::uint32_t>(bytes.size()));
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::uint32_t bits = byte_at(i) << 16 | byte_at(i + 1) << 8 | byte_at(i + 2);
    out += {Digit(bits >> 18), Digit(bits >> 12), Digit(bits >> 6), Digit(bits)};
  }
  out += "\r\n";
}

}  // namespace

void Uuencoder::Begin(std::string_view file_name, std::string& out) {
  pending_size_ = 0;
  out += "begin 644 " + AsciiFileName(file_name) + "\r\n";
}

void Uuencoder::Encode(std::string_view bytes, std::string& out) {
  while (!bytes.empty()) {
    const std::size_t taken = std::min(kLineBytes - pending_size_, bytes.size());
    std::copy_n(bytes.data(), taken, pending_.data() + pending_size_);
    pending_size_ += taken;
    bytes.remove_prefix(taken);
    if (pending_size_ < kLineBytes) return;
    AppendEncodedLine(out, {pending_.data(), kLineBytes});
    pending_size_ = 0;
  }
}

void Uuencoder::Finish(std::string& out) {
  if (pending_size_ > 0) AppendEncodedLine(out, {pending_.data(), pending_size_});
  pending_size_ = 0;
  AppendEncodedLine(out, {});
  out += "end\r\n";
}

void Uudecoder::TakeDigit(std::uint32_t digit, std::string& out) {
  if (left_ == 0) return;
  bits_ = bits_ << 6 | (digit & 63);
  if (++digits_ < 4) return;
  digits_ = 0;
  for (int shift = 16; shift >= 0 && left_ > 0; shift -= 8, --left_) out += static_cast<char>(bits_ >> shift & 0xFF);
}

void Uudecoder::Decode(std::string_view bytes, std::string& out) {
  for (const char c : bytes) {
    if (is_ended_) return;
    const auto digit = static_cast<std::uint32_t>(static_cast<std::uint8_t>(c)) - ' ';
    if (c == '\r' || c == '\n') {
      while (left_ > 0) TakeDigit(0, out);
      is_at_line_ = true;
    } else if (is_at_line_) {
      is_at_line_ = false;
      is_ended_ = digit > 64 || (digit & 63) == 0;
      left_ = digit & 63;
      digits_ = 0;
    } else {
      TakeDigit(digit, out);
    }
  }
}

}  // namespace quillcast::mime
