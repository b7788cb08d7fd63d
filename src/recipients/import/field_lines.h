// Lines of fields: what every file of recipients comes to before its fields are mapped, whatever its format is.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/result.h"
#include "recipients/import/text_encoding.h"

namespace quillcast::recipients {

enum class FileFormat : std::uint8_t { kAuto, kDelimited, kSpreadsheet, kVCard, kLdif };

enum class LineFault : std::uint8_t { kNone, kTooLong, kOpenQuote };

struct FieldLine {
  std::span<const std::string_view> fields;  // they and their texts are valid until the next line; none with a fault
  std::int64_t number = 0;                   // from 1: the line it begins on, the row of a sheet, the card of a book
  LineFault fault = LineFault::kNone;
};

// What is known of a file whose lines are read.
struct FileFacts {
  FileFormat format = FileFormat::kDelimited;
  TextEncoding encoding;       // without a name where the format has its own
  std::uint64_t size = 0;      // bytes
  std::string sheet = {};      // of a spreadsheet, the one whose rows were told; known once there was one
  int sheets_left_unread = 0;  // known when the reading is over
  // Of the columns that are taken, those that no line had so far; none before the first line.
  std::vector<std::size_t> lacking_columns = {};
};

class FieldLines {
 public:
  // False: no more lines are wanted.
  using Take = std::function<bool(const FieldLine& line)>;

  virtual ~FieldLines() = default;
  // Hands on each line in order. Once.
  virtual Result<void> Read(const Take& take) = 0;
  virtual FileFacts Facts() const = 0;
  // So far; may be asked within `take`.
  virtual std::uint64_t BytesRead() const = 0;
};

}  // namespace quillcast::recipients
