// Reads a text file of any size as UTF-8, in blocks, whatever it is encoded in.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "recipients/import/text_encoding.h"

namespace quillcast::recipients {

class TextSource {
 public:
  // `overrule`, when not empty, is the encoding; else it is found out, see FindOutEncoding.
  // Errors: kNoInput for a file that cannot be read, kUsage for an unknown name in `overrule`; here and in Read
  // kTryAgain when `cancel`, which outlives the source, asks to give up.
  static Result<TextSource> Open(const std::filesystem::path& path, std::string_view overrule,
                                 std::string_view system_code_page, const platform::CancelToken* cancel = nullptr);
  // The encoding is known: the file is not read for it.
  static Result<TextSource> OpenKnown(const std::filesystem::path& path, const TextEncoding& encoding,
                                      const platform::CancelToken* cancel = nullptr);

  // Puts the next block of whole characters into `block`; false at the end. Bytes that mean nothing in the encoding
  // become U+FFFD; control characters, NUL too, are text like any other.
  Result<bool> Read(std::string& block);

  const TextEncoding& encoding() const { return encoding_; }
  std::uint64_t size() const { return size_; }  // bytes
  std::uint64_t bytes_read() const { return bytes_read_; }

 private:
  TextSource() = default;
  static Result<TextSource> OpenFile(const std::filesystem::path& path, const platform::CancelToken* cancel);
  Result<void> Begin(TextEncoding encoding);
  void TakeUtf8(std::string_view bytes, std::string& block);
  void Convert(std::string_view bytes, bool is_last, std::string& out);

  std::filesystem::path path_;
  const platform::CancelToken* cancel_ = nullptr;
  platform::UniqueFd fd_;
  std::uint64_t size_ = 0;
  std::uint64_t bytes_read_ = 0;
  TextEncoding encoding_;
  charset::Converter converter_;  // none: the bytes are UTF-8
  std::string buffer_;
  std::string split_;       // the beginning of a character whose end is in the next block
  char16_t high_half_ = 0;  // of a surrogate pair whose low half comes next
  bool at_end_ = false;
};

}  // namespace quillcast::recipients
