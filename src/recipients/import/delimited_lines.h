// The lines of a delimited text: cut at every delimiter as they stand, or quoted as RFC 4180 has it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recipients/import/field_lines.h"
#include "recipients/import/line_reader.h"
#include "recipients/import/quoted_reader.h"
#include "recipients/import/text_source.h"

namespace quillcast::recipients {

// A text with a delimiter between its fields. Of longer lines the first `most_fields` alone are cut.
class TextFields : public FieldLines {
 public:
  TextFields(TextSource source, char delimiter, std::size_t most_fields)
      : source_(std::move(source)), delimiter_(delimiter), most_fields_(most_fields) {}
  FileFacts Facts() const override;
  std::uint64_t BytesRead() const override { return source_.bytes_read(); }

 protected:
  TextSource source_;
  char delimiter_;
  std::size_t most_fields_;
};

// Every line, an empty one too, has one field at least. A line over 1 MiB is a fault.
class DelimitedLines final : public TextFields {
 public:
  using TextFields::TextFields;
  Result<void> Read(const Take& take) override;
};

// RFC 4180: a field that begins with a quote goes to the quote that ends it, with delimiters and line ends inside; two
// quotes are one of it. A quote elsewhere stands for itself. Empty lines between records are none.
class QuotedLines final : public TextFields {
 public:
  using TextFields::TextFields;
  Result<void> Read(const Take& take) override;
};

// The first `most` fields of a line into `fields`, in the place of what it holds.
void SplitLine(std::string_view line, char delimiter, std::size_t most, std::vector<std::string_view>& fields);

}  // namespace quillcast::recipients
