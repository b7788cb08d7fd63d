// Records of a text in the format of RFC 4180, block by block.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/import/field_lines.h"

namespace quillcast::recipients {

class QuotedReader {
 public:
  static constexpr std::size_t kLongestRecord = std::size_t{1024} * 1024;  // bytes of UTF-8

  // `take` outlives the reader. Of longer records the first `most_fields` alone are kept.
  QuotedReader(char delimiter, std::size_t most_fields, const FieldLines::Take& take)
      : delimiter_(delimiter), most_fields_(most_fields), take_(take) {}

  // The next piece; pieces may end anywhere. False when no more are wanted.
  bool Feed(std::string_view piece);
  // Nothing comes behind the last piece.
  void Finish();

 private:
  enum class At : std::uint8_t { kFieldStart, kPlain, kQuoted, kQuoteInQuoted, kBehindQuoted };

  std::size_t Step(std::string_view rest);
  std::size_t StepPlain(std::string_view rest);
  std::size_t StepQuoted(std::string_view rest);
  void Append(std::string_view text);
  void EndField();
  void EndRecord(LineFault fault);
  void CountLine(char c);

  char delimiter_;
  std::size_t most_fields_;
  const FieldLines::Take& take_;
  At at_ = At::kFieldStart;
  bool wanted_ = true;
  bool began_ = false;             // the record has something in it
  bool skip_feed_ = false;         // the last character was CR; an LF that follows belongs to it
  std::size_t length_ = 0;         // of the record so far
  std::int64_t line_ = 1;          // that is being read
  std::int64_t first_line_ = 1;    // of the record
  std::string text_;               // of the record's fields, one behind the other
  std::vector<std::size_t> ends_;  // in text_, of the fields that are over
  std::vector<std::string_view> fields_;
};

}  // namespace quillcast::recipients
