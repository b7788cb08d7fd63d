// Reads a text file of any size as UTF-8, in blocks, whatever it is encoded in.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "platform/file.h"

struct UConverter;

namespace quillcast::recipients {

struct CloseConverter {
  void operator()(UConverter* converter) const;
};

class TextSource {
 public:
  // A byte order mark decides (UTF-8, UTF-16LE, UTF-16BE); else a file that is UTF-8 throughout is that; else it is in
  // `system_code_page`, the locale's codeset, or where that is UTF-8 too, in Windows-1252. `overrule`, when not empty,
  // decides alone, but for the mark of its own encoding. Reads the file once to find out.
  // Errors: kNoInput for a file that cannot be read, kUsage for an unknown name in `overrule`.
  static Result<TextSource> Open(const std::filesystem::path& path, std::string_view overrule,
                                 std::string_view system_code_page);

  // Puts the next block of whole characters into `block`; false at the end. Bytes that mean nothing in the encoding
  // become U+FFFD; control characters, NUL too, are text like any other.
  Result<bool> Read(std::string& block);

  const std::string& encoding() const { return encoding_; }    // "UTF-8", "windows-1252"
  const std::string& how_known() const { return how_known_; }  // "byte order mark", "all of it is valid"
  std::uint64_t size() const { return size_; }                 // bytes
  std::uint64_t bytes_read() const { return bytes_read_; }

 private:
  TextSource() = default;
  void Convert(std::string_view bytes, bool is_last, std::string& out);

  std::filesystem::path path_;
  platform::UniqueFd fd_;
  std::uint64_t size_ = 0;
  std::uint64_t bytes_read_ = 0;
  std::string encoding_;
  std::string how_known_;
  std::unique_ptr<UConverter, CloseConverter> converter_;  // none: the bytes are UTF-8 already
  std::string buffer_;
  std::string split_;       // the beginning of a character whose end is in the next block
  char16_t high_half_ = 0;  // of a surrogate pair whose low half comes next
  bool at_end_ = false;
};

}  // namespace quillcast::recipients
