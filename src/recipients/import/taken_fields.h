// Lines of which some columns are taken, in another order: so come the columns of a wide list among those that can be
// mapped.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "recipients/import/field_lines.h"

namespace quillcast::recipients {

// "25,1,2": the numbers of columns, from 1, eighteen at most; none, for all of them, where it is blank. Errors: kUsage.
Result<std::vector<std::size_t>> ParseColumns(std::string_view text);

// The same as a text.
std::string ColumnsText(const std::vector<std::size_t>& columns);

// A column that a line does not have is empty in it.
class TakenFields final : public FieldLines {
 public:
  TakenFields(std::unique_ptr<FieldLines> lines, std::vector<std::size_t> columns)
      : lines_(std::move(lines)), columns_(std::move(columns)) {}
  Result<void> Read(const Take& take) override;
  FileFacts Facts() const override;
  std::uint64_t BytesRead() const override { return lines_->BytesRead(); }

 private:
  std::unique_ptr<FieldLines> lines_;
  std::vector<std::size_t> columns_;
  std::size_t widest_ = 0;  // fields of a line
};

}  // namespace quillcast::recipients
