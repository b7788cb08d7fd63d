// The pictures and attachments of a run, each encoded once and the same for every recipient.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "message/scratch_bytes.h"
#include "message/transfer_encoding.h"
#include "message/wire_text.h"
#include "smtp/result_code.h"

namespace quillcast::message {

// Why a file could not be taken in, with the code that its recipients get.
struct FileTrouble {
  smtp::ResultCode code = smtp::ResultCode::kFileNotOpened;
  Error error;
};

class Utf8Look;

// Files are read block by block, while they are added: what becomes of them later is no matter. Numbers count them from
// 0 in the order in which they were added.
class EncodedFiles {
 public:
  explicit EncodedFiles(std::filesystem::path scratch_folder) : bytes_(std::move(scratch_folder)) {}

  // `fd` stands at the beginning. kNone takes the file as it stands when it is text that every reader gets back byte
  // for byte, else in base64.
  std::optional<FileTrouble> Add(int fd, const std::filesystem::path& file, TransferEncoding wanted);
  // As lines behind a text that is no MIME, beginning and ending with an empty one.
  std::optional<FileTrouble> AddUuencoded(int fd, const std::filesystem::path& file);

  // Other forms of a file (see InForm) have numbers too, and count.
  std::size_t count() const { return files_.size(); }
  // How it came out, which for kNone may be base64; the size is that of the encoded octets, line ends included.
  WireForm FormOf(std::size_t file) const { return files_[file].form; }
  std::uint64_t SizeOf(std::size_t file) const { return files_[file].size; }
  // Whether all of it is text in UTF-8, which ASCII is too. No text, for this, is what holds NUL, or the bytes by which
  // sets of seven bits shift.
  bool HoldsUtf8(std::size_t file) const { return files_[file].holds_utf8; }
  // The bytes of a file from `offset` on, as many as are at hand; empty at its end. The view holds while files and
  // forms are added.
  Result<std::string_view> ReadAt(std::size_t file, std::uint64_t offset, std::string& buffer) const;

  // The number under which the content of a file is to be had in a part of the form `form` that holds no octet above
  // 127. Made when it is first asked for, from what was read then.
  Result<std::size_t> InForm(std::size_t file, WireForm form);

 private:
  struct File {
    std::uint64_t begin;
    std::uint64_t size;
    WireForm form;
    bool holds_utf8 = false;
    std::size_t other_form = 0;  // its number; 0, which is never a second form, for none
  };
  void Added(std::uint64_t begin, WireForm form, bool holds_utf8) {
    files_.push_back({begin, bytes_.size() - begin, form, holds_utf8});
  }
  std::optional<FileTrouble> TakeAsItStands(int fd, const std::filesystem::path& file, WireText& look, Utf8Look& utf8);
  template <typename Encoder>
  std::optional<FileTrouble> Encode(int fd, const std::filesystem::path& file, Encoder& encoder, Utf8Look& utf8);

  ScratchBytes bytes_;
  std::vector<File> files_;
};

}  // namespace quillcast::message
