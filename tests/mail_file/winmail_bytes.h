// A winmail.dat (TNEF), put together byte by byte.
#pragma once

#include <cstdint>
#include <string>

namespace quillcast::mail_file {

inline std::string Number(std::uint64_t value, int bytes) {
  std::string out;
  for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> 8 * i & 0xFF);
  return out;
}

// An attribute of a winmail.dat, of the message (1) or an attachment (2).
inline std::string Attribute(int level, std::uint32_t id, const std::string& content) {
  unsigned sum = 0;
  for (const char c : content) sum += static_cast<unsigned char>(c);
  return Number(level, 1) + Number(id, 4) + Number(content.size(), 4) + content + Number(sum & 0xFFFF, 2);
}
inline std::string Property(std::uint16_t type, std::uint16_t id, std::string content) {
  const std::string size = Number(content.size(), 4);
  content.resize((content.size() + 3) / 4 * 4);
  return Number(type, 2) + Number(id, 2) + Number(1, 4) + size + content;
}
inline std::string Tnef(const std::string& attributes) {
  return Number(0x223E9F78, 4) + std::string("\1\0", 2) + attributes;
}
inline std::string RtfProperty(const std::string& rtf) {
  return Property(0x0102, 0x1009, Number(rtf.size() + 12, 4) + Number(rtf.size(), 4) + "MELA" + Number(0, 4) + rtf);
}
inline std::string Properties(std::uint32_t count, const std::string& properties) {
  return Number(count, 4) + properties;
}

}  // namespace quillcast::mail_file
