// The row of a sheet that is being read, cell by cell.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/import/field_lines.h"

namespace quillcast::recipients {

class SheetRow {
 public:
  static constexpr std::size_t kMostColumns = 16'384;      // as the programs have it that make such files
  static constexpr std::int64_t kMostCells = 100'000'000;  // of a sheet, those that repeat others included

  explicit SheetRow(const FieldLines::Take& take) : take_(take) {}

  // Columns are counted from 0. What stands beyond the last one is left out.
  void Put(std::size_t column, std::string_view text);
  // A row with nothing in it is none. `number` is counted from 1.
  void End(std::int64_t number);

  bool has_told() const { return has_told_; }
  bool is_wanted() const { return is_wanted_; }
  // From here on no more is taken.
  bool has_too_many() const { return cells_told_ > kMostCells; }

 private:
  const FieldLines::Take& take_;
  std::vector<std::string> cells_;
  std::size_t used_ = 0;  // of cells_
  std::vector<std::string_view> fields_;
  std::int64_t cells_told_ = 0;
  bool has_told_ = false;
  bool is_wanted_ = true;
};

}  // namespace quillcast::recipients
