#include "message/rendered_message.h"

#include <algorithm>

#include "mime/quoted_printable.h"

namespace quillcast::message {

Result<std::string_view> PieceReader::Next() {
  while (next_piece_ < pieces_->count()) {
    if (!pieces_->IsFile(next_piece_)) {
      const auto piece = pieces_->At(next_piece_++);
      if (!piece.empty()) return piece;
      continue;
    }
    auto bytes = files_->ReadAt(pieces_->FileAt(next_piece_), file_offset_, buffer_);
    if (!bytes) return bytes;
    file_offset_ += bytes->size();
    if (!bytes->empty()) return bytes;
    ++next_piece_;
    file_offset_ = 0;
  }
  return std::string_view();
}

void RenderedMessage::Begin(EncodedFiles& files) {
  envelope = {};
  subject_not_encoded = false;
  pieces.Clear();
  files_ = &files;
  eight_bit_parts_.clear();
  multipart_encodings_.clear();
  eight_bit_header_ = false;
  as_it_stands_ = false;
  Rewind();
}

void RenderedMessage::AddEightBitPart(std::size_t header, std::string_view seven_bit_header, WireForm seven_bit_form) {
  eight_bit_parts_.push_back({header, pieces.count(), seven_bit_header, seven_bit_form});
}

void RenderedMessage::ExtendEightBitPart() {
  if (!eight_bit_parts_.empty()) eight_bit_parts_.back().end = pieces.count();
}

void RenderedMessage::FillMultipartEncodings() {
  if (eight_bit_parts_.empty()) return;
  for (const std::size_t place : multipart_encodings_) pieces.Fill(place, "Content-Transfer-Encoding: 8bit\r\n");
}

Result<std::uint64_t> RenderedMessage::UseSevenBit() {
  if (eight_bit_header_) return smtp::MessageSource::UseSevenBit();
  seven_bit_.Clear();
  std::size_t at = 0;
  for (const EightBitPart& part : eight_bit_parts_) {
    AddInSevenBits(at, part.header);
    seven_bit_.AddShared(part.seven_bit_header);
    const auto encoded = Encode(part, seven_bit_);
    if (!encoded) return encoded.error();
    at = part.end;
  }
  AddInSevenBits(at, pieces.count());
  sent_ = {seven_bit_, *files_};
  return seven_bit_.size();
}

// Pieces that are the same in both forms; the labels of multiparts stay away.
void RenderedMessage::AddInSevenBits(std::size_t begin, std::size_t end) {
  for (std::size_t at = begin; at < end; ++at) {
    const bool is_label = std::binary_search(multipart_encodings_.begin(), multipart_encodings_.end(), at);
    if (!is_label) seven_bit_.AddFrom(pieces, at);
  }
}

// Texts are encoded here, each recipient's anew: only a server without 8BITMIME asks for it. Files are encoded once.
Result<void> RenderedMessage::Encode(const EightBitPart& part, RenderedPieces& out) {
  std::size_t column = 0;
  for (std::size_t i = part.header + 1; i < part.end; ++i) {
    if (!pieces.IsFile(i)) {
      mime::AppendQuotedPrintable(out.personal(), pieces.At(i), column, false);
      continue;
    }
    const auto file = files_->InForm(pieces.FileAt(i), part.seven_bit_form);
    if (!file) return file.error();
    out.EndPersonal();
    out.AddFile(*file, files_->SizeOf(*file));
  }
  out.EndPersonal();
  return {};
}

Result<void> WriteMessage(const RenderedMessage& message, int fd, const std::filesystem::path& file,
                          const platform::CancelToken* cancel) {
  PieceReader reader = message.Read();
  for (;;) {
    if (cancel != nullptr && cancel->Requested() != platform::Stop::kNone)
      return Error{Failure::kTryAgain, "Stopped.", ""};
    const auto bytes = reader.Next();
    if (!bytes) return bytes.error();
    if (bytes->empty()) return {};
    auto written = platform::WriteAll(fd, file, *bytes);
    if (!written) return written;
  }
}

}  // namespace quillcast::message
