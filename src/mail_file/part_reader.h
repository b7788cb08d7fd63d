// The content of a part, decoded block by block out of the file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "mail_file/bin_hex.h"
#include "mail_file/compressed_rtf.h"
#include "mail_file/gmime_border.h"
#include "mail_file/message_file.h"
#include "mail_file/part.h"
#include "mail_file/rtf_text.h"
#include "mime/uuencode.h"
#include "platform/cancel.h"

namespace quillcast::mail_file {

// Decoding can begin here in place of the beginning.
struct DecodingPoint {
  std::uint64_t encoded = 0;  // place in the file
  std::uint64_t decoded = 0;  // how many bytes were decoded before it
  TransferDecoder decoder{TransferEncoding::kIdentity};
};

class PartReader {
 public:
  PartReader(std::shared_ptr<const MessageFile> file, const PartSource& source);

  // The next bytes, at most some 128 KiB, until the next call; empty at the end, and only there.
  // Errors: kIo when the file cannot be read, or is shorter than it was.
  Result<std::string_view> Next();

  // Where the next call begins to decode; for what goes through the content to find pieces of it.
  DecodingPoint point() const { return {at_, decoded_, decoder_}; }
  // Smaller pieces than usual, so that there are more points to begin at.
  void ReadInSmallBlocks();

 private:
  Result<void> ReadBlock();
  void Decode(std::string_view bytes);
  void CutPiece(std::uint64_t from);
  void Unpack();

  std::shared_ptr<const MessageFile> file_;
  PartSource source_;
  TransferDecoder decoder_;
  BinHexDecoder bin_hex_;
  mime::Uudecoder uudecoder_;
  CompressedRtfDecoder compressed_rtf_;
  RtfTextDecoder rtf_text_;
  std::size_t block_size_;
  std::uint64_t at_;           // place in the file
  std::uint64_t decoded_ = 0;  // bytes before out_
  bool is_finished_ = false;
  std::string block_;
  std::string out_;
  std::string unpacked_;
};

// A part's content by numbers.
struct PartDigest {
  std::uint64_t size = 0;  // bytes, decoded
  std::string sha256;      // 64 hexadecimal digits, small letters
};
// Reads it to its end. Errors: as PartReader; kTryAgain when it was cancelled.
Result<PartDigest> DigestOf(PartReader reader, const platform::CancelToken* cancel);

}  // namespace quillcast::mail_file
