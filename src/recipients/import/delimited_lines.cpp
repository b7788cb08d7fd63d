#include "recipients/import/delimited_lines.h"

namespace quillcast::recipients {

FileFacts TextFields::Facts() const {
  return {.format = FileFormat::kDelimited, .encoding = source_.encoding(), .size = source_.size()};
}

void SplitLine(std::string_view line, char delimiter, std::size_t most, std::vector<std::string_view>& fields) {
  fields.clear();
  while (fields.size() < most) {
    const auto end = line.find(delimiter);
    fields.push_back(line.substr(0, end));
    if (end == std::string_view::npos) return;
    line.remove_prefix(end + 1);
  }
}

Result<void> DelimitedLines::Read(const Take& take) {
  LineReader reader(source_);
  Line line;
  std::vector<std::string_view> fields;
  for (;;) {
    const auto more = reader.Next(line);
    if (!more) return more.error();
    if (!*more) return {};
    SplitLine(line.text, delimiter_, most_fields_, fields);
    if (line.is_too_long) fields.clear();
    const LineFault fault = line.is_too_long ? LineFault::kTooLong : LineFault::kNone;
    if (!take({.fields = fields, .number = line.number, .fault = fault})) return {};
  }
}

Result<void> QuotedLines::Read(const Take& take) {
  QuotedReader reader(delimiter_, most_fields_, take);
  std::string block;
  for (;;) {
    const auto more = source_.Read(block);
    if (!more) return more.error();
    if (!*more) break;
    if (!reader.Feed(block)) return {};
  }
  reader.Finish();
  return {};
}

}  // namespace quillcast::recipients
