// The lines of a text that comes in blocks, each bounded in length.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "recipients/import/text_source.h"

namespace quillcast::recipients {

struct Line {
  std::string_view text;    // without its end; valid until the next one is read; empty when too long
  std::int64_t number = 0;  // from 1
  bool is_too_long = false;
};

// CR LF, LF and CR each end a line; a last line without an end counts.
class LineReader {
 public:
  static constexpr std::size_t kLongestLine = std::size_t{1024} * 1024;  // bytes of UTF-8

  // `source` outlives the reader.
  explicit LineReader(TextSource& source) : source_(source) {}

  // False behind the last line.
  Result<bool> Next(Line& line);

 private:
  TextSource& source_;
  std::string block_;
  std::size_t at_ = 0;      // what of block_ was read
  std::string pending_;     // the beginning of a line whose end is in a later block
  bool skip_feed_ = false;  // the last line ended in CR; an LF that follows belongs to it
  std::int64_t number_ = 0;
};

}  // namespace quillcast::recipients
