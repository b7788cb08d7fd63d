#include "message/encoded_files.h"

#include <unistd.h>

#include <cerrno>

#include "mime/quoted_printable.h"
#include "mime/uuencode.h"
#include "platform/base64.h"
#include "platform/utf8.h"

namespace quillcast::message {

// Looks at a file piece by piece, however it is cut.
class Utf8Look {
 public:
  void Look(std::string_view bytes) {
    if (!fits_) return;
    std::string joined;
    if (!open_.empty()) bytes = joined = open_ + std::string(bytes);
    const auto whole = bytes.substr(0, bytes.size() - platform::IncompleteUtf8Tail(bytes));
    fits_ = platform::IsUtf8(whole) && whole.find_first_of(kNoText) == std::string_view::npos;
    open_ = bytes.substr(whole.size());
  }
  bool Holds() const { return fits_ && open_.empty(); }

 private:
  static constexpr std::string_view kNoText{"\0\x0E\x0F\x1B", 4};  // NUL, SO, SI, ESC

  bool fits_ = true;
  std::string open_;  // the beginning of a character
};

namespace {

constexpr std::size_t kFileBlock = 57UL * 4096;  // whole lines of base64

FileTrouble NotRead(const Error& error) { return {smtp::ResultCode::kFileNotRead, error}; }

// Quoted-printable lines of a text whose line ends are CRLF and stay so.
class TextEncoder {
 public:
  void Encode(std::string_view bytes, std::string& out) { mime::AppendQuotedPrintable(out, bytes, column_, false); }

 private:
  std::size_t column_ = 0;
};

// Reads a file and gives `take` each block, and nothing at the end. `take` says whether it wants more.
template <typename Take>
std::optional<FileTrouble> ReadThrough(int fd, const std::filesystem::path& file, const Take& take) {
  std::string block(kFileBlock, '\0');
  for (;;) {
    const auto got = platform::ReadSome(fd, file, block.data(), block.size());
    if (!got) return NotRead(got.error());
    const Result<bool> more = take(std::string_view(block).substr(0, *got));
    if (!more) return NotRead(more.error());
    if (*got == 0 || !*more) return {};
  }
}

}  // namespace

template <typename Encoder>
std::optional<FileTrouble> EncodedFiles::Encode(int fd, const std::filesystem::path& file, Encoder& encoder,
                                                Utf8Look& utf8) {
  std::string encoded;
  return ReadThrough(fd, file, [&](std::string_view block) -> Result<bool> {
    encoded.clear();
    utf8.Look(block);
    if (block.empty()) {
      encoder.Finish(encoded);
    } else {
      encoder.Encode(block, encoded);
    }
    const auto kept = bytes_.Append(encoded);
    if (!kept) return kept.error();
    return true;
  });
}

std::optional<FileTrouble> EncodedFiles::Add(int fd, const std::filesystem::path& file, TransferEncoding wanted) {
  const std::uint64_t begin = bytes_.size();
  std::optional<FileTrouble> trouble;
  if (wanted == TransferEncoding::kNone) {
    WireText look;
    Utf8Look utf8;
    trouble = TakeAsItStands(fd, file, look, utf8);
    if (trouble) return trouble;
    if (look.Fits()) {
      Added(begin, look.eight_bit() ? WireForm::kEightBit : WireForm::kSevenBit, utf8.Holds());
      return {};
    }
    const auto cut = bytes_.CutBack(begin);
    if (!cut) return NotRead(cut.error());
    if (::lseek(fd, 0, SEEK_SET) != 0) return NotRead(platform::SystemError("read", file, errno));
  }
  const bool quoted = wanted == TransferEncoding::kQuotedPrintable;
  Utf8Look utf8;
  if (quoted) {
    mime::QuotedPrintableFileEncoder encoder;
    trouble = Encode(fd, file, encoder, utf8);
  } else {
    platform::Base64LineEncoder encoder;
    trouble = Encode(fd, file, encoder, utf8);
  }
  if (!trouble) Added(begin, quoted ? WireForm::kQuotedPrintable : WireForm::kBase64, utf8.Holds());
  return trouble;
}

// Stops reading where the file turns out to be no such text.
std::optional<FileTrouble> EncodedFiles::TakeAsItStands(int fd, const std::filesystem::path& file, WireText& look,
                                                        Utf8Look& utf8) {
  return ReadThrough(fd, file, [&](std::string_view block) -> Result<bool> {
    look.Look(block);
    utf8.Look(block);
    if (!look.may_fit()) return false;
    const auto kept = bytes_.Append(block);
    if (!kept) return kept.error();
    return true;
  });
}

std::optional<FileTrouble> EncodedFiles::AddUuencoded(int fd, const std::filesystem::path& file) {
  const std::uint64_t begin = bytes_.size();
  std::string first = "\r\n";
  mime::Uuencoder encoder;
  encoder.Begin(file.filename().string(), first);
  const auto begun = bytes_.Append(first);
  if (!begun) return NotRead(begun.error());
  Utf8Look utf8;
  auto trouble = Encode(fd, file, encoder, utf8);
  if (!trouble) Added(begin, WireForm::kSevenBit, utf8.Holds());
  return trouble;
}

Result<std::string_view> EncodedFiles::ReadAt(std::size_t file, std::uint64_t offset, std::string& buffer) const {
  const File& found = files_[file];
  if (offset >= found.size) return std::string_view();
  return bytes_.ReadAt(found.begin + offset, found.size - offset, buffer);
}

Result<std::size_t> EncodedFiles::InForm(std::size_t file, WireForm form) {
  if (files_[file].other_form != 0) return files_[file].other_form;
  const std::uint64_t begin = bytes_.size();
  platform::Base64LineEncoder base64;
  TextEncoder quoted;
  std::string buffer;
  std::string encoded;
  for (std::uint64_t offset = 0;;) {
    const auto bytes = ReadAt(file, offset, buffer);
    if (!bytes) return bytes.error();
    encoded.clear();
    if (bytes->empty()) {
      base64.Finish(encoded);
    } else if (form == WireForm::kBase64) {
      base64.Encode(*bytes, encoded);
    } else {
      quoted.Encode(*bytes, encoded);
    }
    offset += bytes->size();
    const bool ended = bytes->empty();
    const auto kept = bytes_.Append(encoded);
    if (!kept) return kept.error();
    if (ended) break;
  }
  Added(begin, form, files_[file].holds_utf8);
  return files_[file].other_form = files_.size() - 1;
}

}  // namespace quillcast::message
