#include "mail_file/tnef_stream.h"

#include <algorithm>
#include <numeric>

namespace quillcast::mail_file {

TnefStream::TnefStream(PartReader reader)
    : reader_(std::move(reader)), point_(std::make_shared<const DecodingPoint>(reader_.point())) {
  reader_.ReadInSmallBlocks();
}

bool TnefStream::Fill() {
  if (is_ended_) return false;
  auto point = std::make_shared<const DecodingPoint>(reader_.point());
  const auto block = reader_.Next();
  if (!block) read_ = block.error();
  if (!block || block->empty()) {
    is_ended_ = true;
    return false;
  }
  point_ = std::move(point);
  block_ = *block;
  at_ = 0;
  return true;
}

std::string TnefStream::Take(std::uint64_t size, std::size_t keep) {
  std::string kept;
  while (size > 0) {
    if (at_ == block_.size() && !Fill()) break;
    const auto piece =
        std::string_view(block_).substr(at_, static_cast<std::size_t>(std::min<std::uint64_t>(size, block_.size())));
    kept += piece.substr(0, keep - std::min(keep, kept.size()));
    sum_ = std::accumulate(piece.begin(), piece.end(), sum_, [](std::uint16_t sum, char c) {
      return static_cast<std::uint16_t>(sum + static_cast<unsigned char>(c));
    });
    at_ += piece.size();
    size -= piece.size();
  }
  return kept;
}

std::uint8_t TnefStream::Byte() {
  const std::string byte = Take(1, 1);
  return byte.empty() ? 0 : static_cast<std::uint8_t>(byte[0]);
}

std::uint16_t TnefStream::Number16() {
  const unsigned low = Byte();
  return static_cast<std::uint16_t>(low | static_cast<unsigned>(Byte()) << 8);
}

std::uint32_t TnefStream::Number32() {
  const std::uint32_t low = Number16();
  return low | std::uint32_t{Number16()} << 16;
}

}  // namespace quillcast::mail_file
