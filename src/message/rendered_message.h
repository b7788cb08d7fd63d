// One recipient's message, as a session takes it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "message/encoded_files.h"
#include "message/rendered_pieces.h"
#include "platform/cancel.h"
#include "smtp/envelope.h"
#include "smtp/message_source.h"

namespace quillcast::message {

// Reads pieces in order, from a place of its own: several may read the same message at a time.
class PieceReader {
 public:
  PieceReader() = default;
  // Both must outlive it.
  PieceReader(const RenderedPieces& pieces, const EncodedFiles& files) : pieces_(&pieces), files_(&files) {}

  // As MessageSource::Next.
  Result<std::string_view> Next();

 private:
  const RenderedPieces* pieces_ = nullptr;
  const EncodedFiles* files_ = nullptr;
  std::size_t next_piece_ = 0;
  std::uint64_t file_offset_ = 0;
  std::string buffer_;
};

// What MAIL and RCPT need, and the bytes. Reused from one recipient to the next; it must not outlive the template that
// rendered it.
class RenderedMessage final : public smtp::MessageSource {
 public:
  smtp::Envelope envelope;
  bool subject_not_encoded = false;  // the account's character set cannot hold it; it goes out as UTF-8
  RenderedPieces pieces;             // in the first form

  RenderedMessage() = default;
  RenderedMessage(const RenderedMessage&) = delete;
  RenderedMessage& operator=(const RenderedMessage&) = delete;

  // Empty again, for the next recipient.
  void Begin(EncodedFiles& files);
  // The pieces from `header` to the end of the list are a part that holds octets above 127. Without them it has this
  // header, and a body of that form.
  void AddEightBitPart(std::size_t header, std::string_view seven_bit_header, WireForm seven_bit_form);
  // What was added since belongs to the last such part, where there is one.
  void ExtendEightBitPart();
  // The label of a multipart, at this place in its header. Filled when all parts are there: 8bit where any part of the
  // message is, which is at least as wide as RFC 2045 6.4 asks, and no label in seven bits.
  void ReserveMultipartEncoding() { multipart_encodings_.push_back(pieces.Reserve()); }
  void FillMultipartEncodings();
  // Some part goes out as it stands, and its lines may begin with anything.
  void SetAsItStands() { as_it_stands_ = true; }
  // A header holds octets above 127, for which there is no other form.
  void SetEightBitHeader() { eight_bit_header_ = true; }
  bool eight_bit() const { return eight_bit_header_ || !eight_bit_parts_.empty(); }

  // Octets of the first form, files included.
  std::uint64_t size() const { return pieces.size(); }

  Result<std::string_view> Next() override { return sent_.Next(); }
  void Rewind() override { sent_ = Read(); }
  // The first form, apart from what a session has taken.
  PieceReader Read() const { return {pieces, *files_}; }
  bool MayHaveLeadingDots() const override { return as_it_stands_; }  // an encoded line does not begin with one
  Result<std::uint64_t> UseSevenBit() override;

 private:
  struct EightBitPart {
    std::size_t header;
    std::size_t end;
    std::string_view seven_bit_header;
    WireForm seven_bit_form;
  };
  Result<void> Encode(const EightBitPart& part, RenderedPieces& out);
  void AddInSevenBits(std::size_t begin, std::size_t end);

  EncodedFiles* files_ = nullptr;
  std::vector<EightBitPart> eight_bit_parts_;
  std::vector<std::size_t> multipart_encodings_;  // in rising order
  bool eight_bit_header_ = false;
  bool as_it_stands_ = false;
  RenderedPieces seven_bit_;
  PieceReader sent_;  // of the form that goes out
};

// The bytes of a message into an open file. What is sent of it does not notice. A request by `cancel` ends it with
// kTryAgain.
Result<void> WriteMessage(const RenderedMessage& message, int fd, const std::filesystem::path& file,
                          const platform::CancelToken* cancel = nullptr);

}  // namespace quillcast::message
