#include "mime/uuencode.h"

#include <cstdint>

namespace quillcast::mime {
namespace {

constexpr std::size_t kLineBytes = 45;

char Digit(std::uint32_t bits) { return (bits & 63) == 0 ? '`' : static_cast<char>(' ' + (bits & 63)); }

void AppendLine(std::string& out, std::string_view bytes) {
  out += Digit(static_cast<std::uint32_t>(bytes.size()));
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t bits = 0;
    for (std::size_t k = i; k < i + 3; ++k) bits = bits << 8 | (k < bytes.size() ? static_cast<std::uint8_t>(bytes[k]) : 0);
    out += {Digit(bits >> 18), Digit(bits >> 12), Digit(bits >> 6), Digit(bits)};
  }
  out += "\r\n";
}

}  // namespace

void Uuencoder::Begin(std::string_view file_name, std::string& out) {
  out += "begin 644 ";
  out += file_name;
  out += "\r\n";
}

void Uuencoder::Encode(std::string_view bytes, std::string& out) {
  open_ += bytes;
  std::string_view rest = open_;
  for (; rest.size() >= kLineBytes; rest.remove_prefix(kLineBytes)) AppendLine(out, rest.substr(0, kLineBytes));
  open_ = std::string(rest);
}

void Uuencoder::Finish(std::string& out) {
  if (!open_.empty()) AppendLine(out, open_);
  open_.clear();
  out += "`\r\nend\r\n";
}

}  // namespace quillcast::mime
