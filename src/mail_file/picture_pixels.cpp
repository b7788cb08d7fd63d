#include "mail_file/picture_pixels.h"

#include <cstdint>
#include <cstdlib>

namespace quillcast::mail_file {
namespace {

constexpr std::int64_t kLongestSide = 100'000;

std::uint32_t ByteAt(std::string_view bytes, std::size_t at) { return static_cast<unsigned char>(bytes[at]); }
std::uint32_t BigEndian(std::string_view bytes, std::size_t at, std::size_t size) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < size; ++i) value = value << 8 | ByteAt(bytes, at + i);
  return value;
}
std::uint32_t LittleEndian32(std::string_view bytes, std::size_t at) {
  return ByteAt(bytes, at) | ByteAt(bytes, at + 1) << 8 | ByteAt(bytes, at + 2) << 16 | ByteAt(bytes, at + 3) << 24;
}

std::optional<html::RtfPictureSize> Size(std::int64_t width, std::int64_t height) {
  if (width < 1 || height < 1 || width > kLongestSide || height > kLongestSide) return {};
  return html::RtfPictureSize{static_cast<int>(width), static_cast<int>(height)};
}

// The frame header (ITU T.81 B.2.2) stands behind segments that say their length.
std::optional<html::RtfPictureSize> PixelsOfJpeg(std::string_view head) {
  std::size_t at = 2;
  while (at + 9 <= head.size() && ByteAt(head, at) == 0xFF) {
    const std::uint32_t marker = ByteAt(head, at + 1);
    const bool is_frame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (is_frame) return Size(BigEndian(head, at + 7, 2), BigEndian(head, at + 5, 2));
    at += marker == 0xFF ? 1 : 2 + BigEndian(head, at + 2, 2);
  }
  return {};
}

}  // namespace

std::optional<html::RtfPictureSize> PixelsOf(std::string_view head) {
  using namespace std::string_view_literals;
  if (head.starts_with("\x89PNG\r\n\x1A\n"sv) && head.size() >= 24)
    return Size(BigEndian(head, 16, 4), BigEndian(head, 20, 4));
  if (head.starts_with("\xFF\xD8\xFF"sv)) return PixelsOfJpeg(head);
  if (head.starts_with("BM"sv) && head.size() >= 26) {
    // A height below 0 is that of rows from the top.
    return Size(static_cast<std::int32_t>(LittleEndian32(head, 18)),
                std::abs(std::int64_t{static_cast<std::int32_t>(LittleEndian32(head, 22))}));
  }
  return {};
}

}  // namespace quillcast::mail_file
