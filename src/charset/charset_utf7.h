// UTF-7 (RFC 2152). Only the characters that no gateway touches stand for themselves; each run of others is closed, so
// that texts can be put one behind the other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quillcast::charset {

// As ShiftedWriter, with Finish closing the run that is open.
class Utf7Writer {
 public:
  explicit Utf7Writer(std::string& out) : out_(out) {}

  // How much of the beginning of a text can be put as it is.
  static std::size_t DirectRun(std::string_view utf8);
  void PutDirect(std::string_view ascii);
  bool Put(char32_t code);
  void Finish();

 private:
  void PutUnit(std::uint32_t unit);

  std::string& out_;
  bool shifted_ = false;
  std::uint32_t bits_ = 0;  // not yet written, in the lowest places
  int bit_count_ = 0;
};

// U+FFFD for half a surrogate pair; bits that make no character are dropped.
std::string DecodeUtf7(std::string_view bytes);

}  // namespace quillcast::charset
