// The row of a sheet that is being read, cell by cell.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "recipients/import/field_lines.h"

namespace quillcast::recipients {

// More than the programs open that make such files.
inline constexpr std::size_t kMostSheets = 10'000;
inline constexpr const char* kTooManySheets = "it has more sheets than any list";

class SheetRow {
 public:
  static constexpr std::size_t kMostColumns = 16'384;                   // as the programs have it that make such files
  static constexpr std::int64_t kMostCells = 100'000'000;               // of a sheet, those that repeat others included
  static constexpr std::size_t kLongestRow = std::size_t{1024} * 1024;  // bytes of UTF-8
  static constexpr std::uint64_t kMostBytes = std::uint64_t{4} * 1024 * 1024 * 1024;  // of a sheet's rows together

  explicit SheetRow(const FieldLines::Take& take) : take_(take) {}

  // Columns are counted from 0. What stands beyond the last one is left out.
  void Put(std::size_t column, std::string_view text);
  // A row with nothing in it is none, and one whose cells are too long together has no fields. `number` is counted
  // from 1.
  void End(std::int64_t number);

  bool has_told() const { return has_told_; }
  bool is_wanted() const { return is_wanted_; }
  // From here on no more is taken.
  bool has_too_many() const { return cells_told_ > kMostCells || bytes_told_ > kMostBytes; }

 private:
  // In text_.
  struct Cell {
    std::size_t begin = 0;
    std::size_t size = 0;
  };

  const FieldLines::Take& take_;
  std::string text_;  // of the row's cells, one behind the other
  bool is_too_long_ = false;
  std::vector<Cell> cells_;
  std::size_t used_ = 0;  // of cells_
  std::vector<std::string_view> fields_;
  std::int64_t cells_told_ = 0;
  std::uint64_t bytes_told_ = 0;
  bool has_told_ = false;
  bool is_wanted_ = true;
};

// Appends to the text of a cell. Of one that is longer than a row may be, no more is kept than tells that it is.
inline void AppendToCell(std::string& text, std::string_view more) {
  text += more.substr(0, SheetRow::kLongestRow + 1 - std::min(text.size(), SheetRow::kLongestRow + 1));
}

}  // namespace quillcast::recipients
