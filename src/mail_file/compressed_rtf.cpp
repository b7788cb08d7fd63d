#include "mail_file/compressed_rtf.h"

#include <algorithm>

namespace quillcast::mail_file {
namespace {

constexpr std::string_view kKnownBeforehand =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\froman \\fswiss \\fmodern \\fscript \\fdecor MS "
    "Sans "
    "SerifSymbolArialTimes New RomanCourier{\\colortbl\\red0\\green0\\blue0\r\n\\par "
    "\\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx";
constexpr std::uint32_t kCompressedMark = 0x75465A4C;
constexpr std::uint32_t kPlainMark = 0x414C454D;
constexpr int kItems = 8;  // behind each byte that tells their kinds
constexpr std::size_t kShortest = 2;

}  // namespace

CompressedRtfDecoder::CompressedRtfDecoder() : at_(kKnownBeforehand.size()) {
  window_.fill(' ');
  std::ranges::copy(kKnownBeforehand, window_.begin());
}

// The size of what follows, that of the text, the form and a sum, little-endian.
void CompressedRtfDecoder::TakeHeader(std::uint8_t byte) {
  header_.at(header_size_++) = byte;
  if (header_size_ < header_.size()) return;
  const auto number = [this](std::size_t at) {
    return header_[at] | std::uint32_t{header_[at + 1]} << 8 | std::uint32_t{header_[at + 2]} << 16 |
           std::uint32_t{header_[at + 3]} << 24;
  };
  left_ = number(4);
  const std::uint32_t mark = number(8);
  form_ = mark == kCompressedMark ? Form::kCompressed : mark == kPlainMark ? Form::kPlain : Form::kNone;
}

void CompressedRtfDecoder::Give(char c, std::string& out) {
  if (left_ == 0) return;
  --left_;
  out += c;
  window_[at_] = c;
  at_ = (at_ + 1) % kWindow;
}

// Twelve bits say where, four how much. The place that is written next ends the text.
void CompressedRtfDecoder::TakeReference(std::string& out) {
  std::size_t from = static_cast<std::size_t>(first_of_two_ >> 4);
  if (from == at_) left_ = 0;
  for (std::size_t size = static_cast<std::size_t>(first_of_two_ & 15) + kShortest; size > 0; --size) {
    Give(window_[from], out);
    from = (from + 1) % kWindow;
  }
  first_of_two_ = -1;
}

void CompressedRtfDecoder::TakeByte(std::uint8_t byte, std::string& out) {
  if (first_of_two_ >= 0) {
    first_of_two_ = first_of_two_ << 8 | byte;
    return TakeReference(out);
  }
  if (kinds_left_ == 0) {
    kinds_ = byte;
    kinds_left_ = kItems;
    return;
  }
  const bool is_reference = (kinds_ & 1) != 0;
  kinds_ >>= 1;
  --kinds_left_;
  if (is_reference) {
    first_of_two_ = byte;
  } else {
    Give(static_cast<char>(byte), out);
  }
}

void CompressedRtfDecoder::Decode(std::string_view bytes, std::string& out) {
  for (const char c : bytes) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (form_ == Form::kUnknown) {
      TakeHeader(byte);
    } else if (left_ == 0 || form_ == Form::kNone) {
      return;
    } else if (form_ == Form::kPlain) {
      Give(c, out);
    } else {
      TakeByte(byte, out);
    }
  }
}

}  // namespace quillcast::mail_file
