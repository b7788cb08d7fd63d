#include "document/cut_picture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace quillcast::document {
namespace {

std::uint8_t ByteAt(std::string_view bytes, std::size_t at) { return static_cast<std::uint8_t>(bytes[at]); }

std::uint64_t BigEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<std::uint8_t>(byte);
  return number;
}

std::uint64_t LittleEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) number = number << 8 | ByteAt(bytes, i);
  return number;
}

// The next marker in the entropy-coded data (ITU T.81 B.1.1.2): an FF that is followed by neither a stuffed 00, nor a
// restart marker, nor a further FF.
std::size_t NextMarker(std::string_view bytes, std::size_t at) {
  for (; at + 1 < bytes.size(); ++at) {
    const std::uint8_t next = ByteAt(bytes, at + 1);
    const bool is_data = next == 0 || next == 0xFF || (next >= 0xD0 && next <= 0xD7);
    if (ByteAt(bytes, at) == 0xFF && !is_data) return at;
  }
  return bytes.size();
}

// Goes from marker to marker up to the end of the image; what cameras put behind that does not count.
bool JpegIsCut(std::string_view bytes) {
  std::size_t at = 2;
  while (at + 4 <= bytes.size()) {
    if (ByteAt(bytes, at) != 0xFF) return false;  // broken, not cut
    const std::uint8_t marker = ByteAt(bytes, at + 1);
    if (marker == 0xFF) {
      ++at;
      continue;
    }
    if (marker == 0xD9) return false;
    at += 2 + BigEndian(bytes.substr(at + 2, 2));
    if (marker == 0xDA) at = NextMarker(bytes, at);
  }
  if (at + 2 > bytes.size()) return true;
  return ByteAt(bytes, at) == 0xFF && ByteAt(bytes, at + 1) != 0xD9;
}

// From chunk to chunk to the one that ends it: length, name, content, checksum (PNG 5.3).
bool PngIsCut(std::string_view bytes) {
  std::size_t at = 8;
  while (at + 12 <= bytes.size()) {
    if (bytes.substr(at + 4, 4) == "IEND") return false;
    at += 12 + BigEndian(bytes.substr(at, 4));
  }
  return true;
}

// Its last byte is ";"; some writers put zeros behind it.
bool GifIsCut(std::string_view bytes) {
  const auto last = bytes.find_last_not_of('\0');
  return last == std::string_view::npos || bytes[last] != ';';
}

bool WebpIsCut(std::string_view bytes) { return LittleEndian(bytes.substr(4, 4)) + 8 > bytes.size(); }

struct Kind {
  std::string_view begin;
  bool (*is_cut)(std::string_view);
};
constexpr auto kKinds = std::to_array<Kind>({
    {"\xFF\xD8\xFF", JpegIsCut},
    {"\x89PNG\r\n\x1A\n", PngIsCut},
    {"GIF8", GifIsCut},
    {"RIFF", WebpIsCut},
});

}  // namespace

bool IsCutShort(std::string_view bytes) {
  const auto* const kind =
      std::find_if(kKinds.begin(), kKinds.end(), [bytes](const Kind& row) { return bytes.starts_with(row.begin); });
  return kind != kKinds.end() && kind->is_cut(bytes);
}

}  // namespace quillcast::document
