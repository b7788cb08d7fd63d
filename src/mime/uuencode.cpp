#include "mime/uuencode.h"

#include <algorithm>
#include <cstdint>

#include "mime/header_text.h"

namespace quillcast::mime {
namespace {

char Digit(std::uint32_t bits) { return (bits & 63) == 0 ? '`' : static_cast<char>(' ' + (bits & 63)); }

void AppendLine(std::string& out, std::string_view bytes) {
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
    AppendLine(out, {pending_.data(), kLineBytes});
    pending_size_ = 0;
  }
}

void Uuencoder::Finish(std::string& out) {
  if (pending_size_ > 0) AppendLine(out, {pending_.data(), pending_size_});
  pending_size_ = 0;
  AppendLine(out, {});
  out += "end\r\n";
}

}  // namespace quillcast::mime
