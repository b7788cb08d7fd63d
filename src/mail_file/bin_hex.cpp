#include "mail_file/bin_hex.h"

#include "mail_file/blanks.h"

namespace quillcast::mail_file {
namespace {

constexpr unsigned char kRunMark = 0x90;
constexpr std::string_view kBinHexDigits = "!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr";
constexpr std::uint64_t kMostGrowth = 16;
constexpr std::uint64_t kFreeGrowth = std::uint64_t{1024} * 1024;
constexpr unsigned kForeign = 64;

constexpr std::array<unsigned char, 256> kValues = [] {
  std::array<unsigned char, 256> values{};
  values.fill(kForeign);
  for (std::size_t i = 0; i < kBinHexDigits.size(); ++i) values[static_cast<unsigned char>(kBinHexDigits[i])] = i;
  return values;
}();

// CRC-16 of CCITT, x^16 + x^12 + x^5 + 1, from 0 on.
constexpr std::array<std::uint16_t, 256> kCrcTable = [] {
  std::array<std::uint16_t, 256> table{};
  for (unsigned i = 0; i < table.size(); ++i) {
    auto crc = static_cast<std::uint16_t>(i << 8);
    for (int bit = 0; bit < 8; ++bit) crc = static_cast<std::uint16_t>(crc << 1 ^ ((crc & 0x8000) != 0 ? 0x1021 : 0));
    table[i] = crc;
  }
  return table;
}();

std::uint32_t BigEndian32(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

}  // namespace

bool BinHexDecoder::GrowsTooMuch() const { return given_ > kFreeGrowth && given_ / kMostGrowth > taken_; }

void BinHexDecoder::BeginFork(Field field, std::uint64_t length) {
  field_ = length > 0 ? field : static_cast<Field>(static_cast<int>(field) + 1);
  left_ = length > 0 ? length : 2;
  crc_ = 0;
  stated_crc_ = 0;
}

void BinHexDecoder::TakeCrcByte(unsigned char byte, Field next) {
  stated_crc_ = static_cast<std::uint16_t>(stated_crc_ << 8 | byte);
  if (--left_ > 0) return;
  if (stated_crc_ != crc_) has_wrong_crc_ = true;
  switch (next) {
    case Field::kData:
      return BeginFork(next, BigEndian32(header_.data() + 11));
    case Field::kResource:
      return BeginFork(next, BigEndian32(header_.data() + 15));
    default:
      field_ = Field::kEnd;
  }
}

void BinHexDecoder::TakeByte(unsigned char byte, std::string& out) {
  ++given_;
  const bool is_crc = field_ == Field::kHeaderCrc || field_ == Field::kDataCrc || field_ == Field::kResourceCrc;
  if (!is_crc) crc_ = static_cast<std::uint16_t>(crc_ << 8 ^ kCrcTable[(crc_ >> 8 ^ byte) & 0xFF]);
  switch (field_) {
    case Field::kNameLength:
      if (byte == 0 || byte > 63) is_broken_ = true;
      left_ = byte;
      field_ = Field::kName;
      return;
    case Field::kName:
      name_ += static_cast<char>(byte);
      if (--left_ > 0) return;
      left_ = header_.size();
      field_ = Field::kHeader;
      return;
    case Field::kHeader:
      header_[header_.size() - left_] = byte;
      if (--left_ > 0) return;
      left_ = 2;
      field_ = Field::kHeaderCrc;
      return;
    case Field::kHeaderCrc:
      return TakeCrcByte(byte, Field::kData);
    case Field::kData:
      out += static_cast<char>(byte);
      [[fallthrough]];
    case Field::kResource:
      if (--left_ > 0) return;
      field_ = field_ == Field::kData ? Field::kDataCrc : Field::kResourceCrc;
      left_ = 2;
      return;
    case Field::kDataCrc:
      return TakeCrcByte(byte, Field::kResource);
    case Field::kResourceCrc:
      return TakeCrcByte(byte, Field::kEnd);
    case Field::kEnd:
      return;  // what fills up the last group
  }
}

// "x 90 n" is n times x, and "90 00" a 90.
void BinHexDecoder::TakeRun(unsigned char byte, std::string& out) {
  if (!after_mark_ && byte == kRunMark) {
    after_mark_ = true;
    return;
  }
  if (!after_mark_) {
    last_ = byte;
    return TakeByte(byte, out);
  }
  after_mark_ = false;
  if (byte == 0) {
    last_ = kRunMark;
    return TakeByte(kRunMark, out);
  }
  for (unsigned i = 1; i < byte && !is_broken_; ++i) TakeByte(last_, out);
}

void BinHexDecoder::TakeBits(unsigned bits, std::string& out) {
  held_bits_ = held_bits_ << 6 | bits;
  held_count_ += 6;
  if (held_count_ < 8) return;
  held_count_ -= 8;
  TakeRun(static_cast<unsigned char>(held_bits_ >> held_count_ & 0xFF), out);
}

void BinHexDecoder::Decode(std::string_view bytes, std::string& out) {
  for (const char c : bytes) {
    if (GrowsTooMuch()) is_broken_ = true;
    if (has_ended_ || is_broken_) return;
    ++taken_;
    if (!has_begun_) {
      has_begun_ = is_at_line_ && c == ':';
      is_at_line_ = c == '\n' || c == '\r' || (is_at_line_ && IsBlank(c));
    } else if (c == ':') {
      has_ended_ = true;
    } else if (!IsBlank(c)) {
      const unsigned value = kValues[static_cast<unsigned char>(c)];
      if (value == kForeign) {
        is_broken_ = true;
      } else {
        TakeBits(value, out);
      }
    }
  }
}

LoadCode BinHexDecoder::Verdict() const {
  if (is_broken_ || field_ != Field::kEnd) return LoadCode::kBinHex;
  return has_wrong_crc_ ? LoadCode::kBinHexCrc : LoadCode::kLoaded;
}

}  // namespace quillcast::mail_file
