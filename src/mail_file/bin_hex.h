// BinHex 4.0 (RFC 1741, appendix A): a file of two forks as text, run lengths and CRCs within.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "mail_file/load_code.h"

namespace quillcast::mail_file {

// Decodes from the line that begins with ":" on, or from the words "(This file must be converted" before it; gives the
// data fork. A decoder is for one file.
class BinHexDecoder {
 public:
  // Appends what of the data fork the bytes hold.
  void Decode(std::string_view bytes, std::string& out);

  // When all bytes were given: kBinHex for a text that is none, ends too early, or comes to more than 16 times itself
  // beyond the first MiB (runs could make 64 times of it); kBinHexCrc where a sum is wrong.
  LoadCode Verdict() const;
  // As the header of it says, in MacRoman, at most 63 bytes.
  const std::string& name() const { return name_; }

 private:
  enum class Field { kNameLength, kName, kHeader, kHeaderCrc, kData, kDataCrc, kResource, kResourceCrc, kEnd };

  bool GrowsTooMuch() const;
  void TakeBits(unsigned bits, std::string& out);
  void TakeRun(unsigned char byte, std::string& out);
  void TakeByte(unsigned char byte, std::string& out);
  void TakeCrcByte(unsigned char byte, Field next);
  void BeginFork(Field field, std::uint64_t length);

  bool has_begun_ = false;  // the colon came
  bool has_ended_ = false;  // the colon behind it came
  bool is_at_line_ = true;  // before the colon: nothing but blanks stands on the line yet
  bool is_broken_ = false;
  bool has_wrong_crc_ = false;
  std::uint64_t taken_ = 0;  // bytes of the text
  std::uint64_t given_ = 0;  // bytes that they stand for, of both forks
  unsigned held_bits_ = 0;
  int held_count_ = 0;
  bool after_mark_ = false;  // the byte of run lengths came
  unsigned char last_ = 0;   // byte, for runs
  Field field_ = Field::kNameLength;
  std::uint64_t left_ = 0;  // bytes of the field
  std::string name_;
  std::array<unsigned char, 19> header_{};  // NUL, type, creator, flags, and the lengths of both forks
  std::uint16_t crc_ = 0;
  std::uint16_t stated_crc_ = 0;
};

}  // namespace quillcast::mail_file
