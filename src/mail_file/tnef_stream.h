// The content of winmail.dat as numbers and pieces, read forwards.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "mail_file/part_reader.h"

namespace quillcast::mail_file {

// After a failure or the end of the content all numbers are 0, and is_ended() says so.
class TnefStream {
 public:
  explicit TnefStream(PartReader reader);

  std::uint8_t Byte();
  std::uint16_t Number16();  // little-endian, as all here
  std::uint32_t Number32();
  // Passes `size` bytes; of them the first `keep` are given.
  std::string Take(std::uint64_t size, std::size_t keep);
  void Skip(std::uint64_t size) { Take(size, 0); }

  // How many bytes were read.
  std::uint64_t position() const { return point_->decoded + at_; }
  // Where decoding can begin for what comes next.
  std::shared_ptr<const DecodingPoint> point() const { return point_; }
  // The sum of all bytes that were read, modulo 65,536.
  std::uint16_t sum() const { return sum_; }
  bool is_ended() const { return is_ended_; }
  // Why it ended too early; nothing where the content did.
  const Result<void>& read() const { return read_; }

 private:
  bool Fill();

  PartReader reader_;
  std::string block_;
  std::shared_ptr<const DecodingPoint> point_;  // of block_
  std::size_t at_ = 0;                          // in block_
  std::uint16_t sum_ = 0;
  bool is_ended_ = false;
  Result<void> read_;
};

}  // namespace quillcast::mail_file
