#include "mail_file/part_reader.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace quillcast::mail_file {
namespace {

constexpr std::size_t kContentBlock = std::size_t{64} * 1024;
constexpr std::size_t kSmallBlock = std::size_t{4} * 1024;

struct FreeDigest {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

}  // namespace

PartReader::PartReader(std::shared_ptr<const MessageFile> file, const PartSource& source)
    : file_(std::move(file)),
      source_(source),
      decoder_(source.from ? source.from->decoder : TransferDecoder(source.encoding)),
      block_size_(kContentBlock),
      at_(source.from ? source.from->encoded : source.bytes.begin),
      decoded_(source.from ? source.from->decoded : 0) {}

void PartReader::ReadInSmallBlocks() { block_size_ = kSmallBlock; }

Result<void> PartReader::ReadBlock() {
  block_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(block_size_, source_.bytes.end - at_)));
  const auto count = file_->ReadAt(at_, block_.data(), block_.size());
  if (!count) return count.error();
  if (*count < block_.size()) {
    return Error{Failure::kIo, Say("\"{}\" became shorter while it was read.", file_->path().string()),
                 "Read the message anew."};
  }
  at_ += *count;
  return {};
}

// Leaves of what was decoded, which began at `from`, what belongs to the piece.
void PartReader::CutPiece(std::uint64_t from) {
  const std::uint64_t to = from + out_.size();
  const std::uint64_t begin = std::clamp(source_.piece->begin, from, to);
  const std::uint64_t end = std::clamp(source_.piece->end, begin, to);
  out_.resize(static_cast<std::size_t>(end - from));
  out_.erase(0, static_cast<std::size_t>(begin - from));
  if (to >= source_.piece->end) is_finished_ = true;
}

void PartReader::Decode(std::string_view bytes) {
  out_.clear();
  decoder_.Decode(bytes, out_);
  if (at_ == source_.bytes.end) {
    decoder_.Finish(out_);
    is_finished_ = true;
  }
  const std::uint64_t from = decoded_;
  decoded_ += out_.size();
  if (source_.piece) CutPiece(from);
  if (source_.unpacking != Unpacking::kNone) Unpack();
}

void PartReader::Unpack() {
  unpacked_.clear();
  switch (source_.unpacking) {
    case Unpacking::kNone:
      return;
    case Unpacking::kBinHexData:
      bin_hex_.Decode(out_, unpacked_);
      break;
    case Unpacking::kUuencoded:
      uudecoder_.Decode(out_, unpacked_);
      break;
    case Unpacking::kRtf:
      compressed_rtf_.Decode(out_, unpacked_);
      break;
    case Unpacking::kRtfText: {
      std::string rtf;
      compressed_rtf_.Decode(out_, rtf);
      rtf_text_.Decode(rtf, unpacked_);
      if (is_finished_) rtf_text_.Finish(unpacked_);
    }
  }
  out_.swap(unpacked_);
}

Result<std::string_view> PartReader::Next() {
  out_.clear();
  while (out_.empty() && !is_finished_) {
    if (const auto read = ReadBlock(); !read) return read.error();
    Decode(block_);
  }
  return std::string_view(out_);
}

Result<PartDigest> DigestOf(PartReader reader, const platform::CancelToken* cancel) {
  const std::unique_ptr<EVP_MD_CTX, FreeDigest> context(EVP_MD_CTX_new());
  static const EVP_MD* const sha256 = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  const Error broken{Failure::kInternal, "SHA-256 cannot be computed here."};
  if (!context || EVP_DigestInit_ex(context.get(), sha256, nullptr) != 1) return broken;
  PartDigest out;
  for (;;) {
    if (cancel != nullptr && cancel->Requested() != platform::Stop::kNone)
      return Error{Failure::kTryAgain, "Reading the message was cancelled."};
    const auto block = reader.Next();
    if (!block) return block.error();
    if (block->empty()) break;
    if (EVP_DigestUpdate(context.get(), block->data(), block->size()) != 1) return broken;
    out.size += block->size();
  }
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
  unsigned int length = 0;
  if (EVP_DigestFinal_ex(context.get(), digest.data(), &length) != 1) return broken;
  for (unsigned int i = 0; i < length; ++i) out.sha256 += fmt::format("{:02x}", digest[i]);
  return out;
}

}  // namespace quillcast::mail_file
