#include "smtp/base64.h"

#include <cstdint>

namespace quillcast::smtp {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t Byte(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

}  // namespace

std::string EncodeBase64(std::string_view bytes) {
  std::string out;
  out.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::uint32_t bits = Byte(bytes, at) << 16 | Byte(bytes, at + 1) << 8 | Byte(bytes, at + 2);
    out += kAlphabet[bits >> 18];
    out += kAlphabet[bits >> 12 & 63];
    out += at + 1 < bytes.size() ? kAlphabet[bits >> 6 & 63] : '=';
    out += at + 2 < bytes.size() ? kAlphabet[bits & 63] : '=';
  }
  return out;
}

std::optional<std::string> DecodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return {};
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  text.remove_suffix(padding);
  std::string out;
  out.reserve(text.size() / 4 * 3 + 2);
  std::uint32_t bits = 0;
  int held = 0;
  for (const char c : text) {
    const auto value = kAlphabet.find(c);
    if (value == std::string_view::npos) return {};
    bits = (bits << 6 | static_cast<std::uint32_t>(value)) & 0xFFFFFF;
    held += 6;
    if (held < 8) continue;
    held -= 8;
    out += static_cast<char>(bits >> held & 0xFF);
  }
  return out;
}

}  // namespace quillcast::smtp
