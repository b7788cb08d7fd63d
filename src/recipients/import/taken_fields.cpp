#include "recipients/import/taken_fields.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "platform/text.h"
#include "recipients/import/import_mapping.h"

namespace quillcast::recipients {
namespace {

constexpr std::int64_t kLastColumn = 1'000'000;

}  // namespace

Result<std::vector<std::size_t>> ParseColumns(std::string_view text) {
  std::vector<std::size_t> columns;
  if (platform::Trim(text).empty()) return columns;
  for (const std::string_view part : platform::Split(text, ',')) {
    const auto number = platform::ParseWholeNumber(platform::Trim(part));
    if (!number || *number < 1 || *number > kLastColumn) {
      return Error{Failure::kUsage, Say("\"{}\" is no column of a list.", platform::Trim(part)),
                   "Name columns by their numbers, as in \"25,1,2\"."};
    }
    columns.push_back(static_cast<std::size_t>(*number));
  }
  if (columns.size() <= static_cast<std::size_t>(kSourceFields)) return columns;
  return Error{Failure::kUsage, Say("{} columns are too many.", columns.size()),
               "Eighteen can be taken: as many fields as a recipient has."};
}

std::string ColumnsText(const std::vector<std::size_t>& columns) { return fmt::format("{}", fmt::join(columns, ",")); }

Result<void> TakenFields::Read(const Take& take) {
  std::vector<std::string_view> fields;
  return lines_->Read([&](const FieldLine& line) {
    if (line.fault != LineFault::kNone) return take(line);
    fields.clear();
    widest_ = std::max(widest_, line.fields.size());
    for (const std::size_t column : columns_) {
      fields.push_back(column <= line.fields.size() ? line.fields[column - 1] : std::string_view());
    }
    return take({.fields = fields, .number = line.number, .fault = line.fault});
  });
}

FileFacts TakenFields::Facts() const {
  FileFacts facts = lines_->Facts();
  for (const std::size_t column : columns_) {
    if (widest_ > 0 && column > widest_) facts.lacking_columns.push_back(column);
  }
  return facts;
}

}  // namespace quillcast::recipients
