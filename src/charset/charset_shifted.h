// The 7-bit sets that shift between ASCII and characters of two bytes. A text begins, ends and ends each line in ASCII,
// so that texts can be put one behind the other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "charset/charset_rows.h"

namespace quillcast::charset {

struct ShiftSequences;

// Appends to `out` and brings it back to ASCII by Finish; nothing else may be appended before that.
class ShiftedWriter {
 public:
  ShiftedWriter(std::string& out, const CharsetRow& row);

  // How much of the beginning of a text can be put as it is.
  std::size_t DirectRun(std::string_view utf8) const;
  void PutDirect(std::string_view ascii);
  // False, with nothing written, when the set lacks the character.
  bool Put(char32_t code);
  void Finish();

 private:
  enum class State : std::uint8_t { kAscii, kRoman, kDouble };
  void ShiftTo(State state);

  std::string& out_;
  const CodedCharacters& characters_;
  const ShiftSequences& sequences_;
  State state_ = State::kAscii;
};

// U+FFFD for what means nothing. A line end brings ASCII back, for texts that forgot to.
std::string DecodeShifted(std::string_view bytes, const CharsetRow& row);

}  // namespace quillcast::charset
