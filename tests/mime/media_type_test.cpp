// What a file is, by its content and its name.
#include "mime/media_type.h"

#include <gtest/gtest.h>

namespace quillcast::mime {
namespace {

TEST(MediaType, KnowsPicturesByContentAndTheRestByName) {
  struct Case {
    const char* name;
    std::string_view content;
    const char* type;
  };
  const Case cases[] = {
      {"a.txt", "\x89PNG\r\n\x1A\n....", "image/png"},
      {"a", "\xFF\xD8\xFF\xE0", "image/jpeg"},
      {"a.gif", "GIF89a...", "image/gif"},
      {"a", "RIFF....WEBPVP8 ", "image/webp"},
      {"a.wav", "RIFF....WAVEfmt ", "audio/wav"},
      {"a",
       std::string_view("\0\0\0\x1C"
                        "ftypavif",
                        12),
       "image/avif"},
      {"a", std::string_view("BM\x10\0\0\0\0\0\0\0\x36\0\0\0", 14), "image/bmp"},
      {"BMW.txt", "BMW is a make of car", "text/plain"},
      {"a", "\xEF\xBB\xBF<?xml version='1.0'?>\n<!-- x > y -->\n<!DOCTYPE svg><svg xmlns='x'>", "image/svg+xml"},
      {"a.html", "<html><svg>", "text/html"},
      {"Offer.PDF", "%PDF-1.7", "application/pdf"},
      {"x.tar.gz", "", "application/gzip"},
      {"7z.7z", "", "application/x-7z-compressed"},
      {"pdf", "", "application/octet-stream"},
      {"a.pdf/readme", "", "application/octet-stream"},
      {"x.", "", "application/octet-stream"},
  };
  for (const Case& c : cases) EXPECT_EQ(MediaTypeOf(c.name, c.content), c.type) << c.name;
}

}  // namespace
}  // namespace quillcast::mime
